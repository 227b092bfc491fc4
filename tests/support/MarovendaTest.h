#pragma once

#include <QObject>

/// Runs the tests of `subject` in an application of their own: with a data directory that goes with the process,
/// without a display, a session bus or a proxy. Returns the process's exit status.
int runMarovendaTest(QObject &subject, int argc, char *argv[]);

/// The main function of a test that has none of its own, and the code that moc makes of its class.
#define MAROVENDA_TEST_MAIN(Test)                                                                                    \
    int main(int argc, char *argv[])                                                                                 \
    {                                                                                                                \
        Test test;                                                                                                   \
        return runMarovendaTest(test, argc, argv);                                                                   \
    }

#pragma once

#include <QObject>

#include <functional>
#include <memory>

/// Runs the tests of what `make` makes in an application of their own: with a data directory that goes with the
/// process, without a display, a session bus or a proxy. Returns the process's exit status.
int runMarovendaTest(const std::function<std::unique_ptr<QObject>()> &make, int argc, char *argv[]);

/// The same for a check that is no Qt Test: runs `check` there and returns what it returns.
int runMarovendaCheck(const std::function<int()> &check, int argc, char *argv[]);

/// The main function of a test.
#define MAROVENDA_TEST_MAIN(Test)                                                                                    \
    int main(int argc, char *argv[])                                                                                 \
    {                                                                                                                \
        return runMarovendaTest([] { return std::make_unique<Test>(); }, argc, argv);                                \
    }

#include "MarovendaTest.h"

#include <QMap>
#include <QTest>

#include <cstdio>

namespace {

struct Known {
    MarovendaTest::Make make;
    bool inApplication;
};

QMap<QByteArray, Known> &tests()
{
    static QMap<QByteArray, Known> all;
    return all;
}

} // namespace

MarovendaTest::MarovendaTest(const char *className, Make make, bool inApplication)
{
    tests()["tst_" + QByteArray(className).chopped(qstrlen("Test"))] = {make, inApplication};
}

/// Called with the name of a test and with arguments of Qt Test.
int main(int argc, char *argv[])
{
    const auto test = tests().constFind(argc > 1 ? argv[1] : "");
    if (test == tests().constEnd()) {
        std::fprintf(stderr, "usage: %s TEST [argument of Qt Test]...\nwhere TEST is one of %s\n", argv[0],
                     tests().keys().join(", ").constData());
        return 2;
    }
    argv[1] = argv[0];
    const auto run = [&] { return QTest::qExec(test->make().get(), argc - 1, argv + 1); };
    return test->inApplication ? runMarovendaCheck(run, argc, argv) : run();
}

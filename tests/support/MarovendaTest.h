#pragma once

#include <QObject>
#include <QTest>

#include <functional>
#include <memory>

/// Runs a check in an application of its own: with a data directory that goes with the process, without a display, a
/// session bus or a proxy. Returns what `check` returns.
int runMarovendaCheck(const std::function<int()> &check, int argc, char *argv[]);

/// A Qt Test of an executable, which runs it when it is called with the test's name: tst_Fields for FieldsTest.
class MarovendaTest {
public:
    using Make = std::unique_ptr<QObject> (*)();

    MarovendaTest(const char *className, Make make, bool inApplication);
};

#define MAROVENDA_TEST_AS(Test, inApplication)                                                                       \
    static const MarovendaTest registered##Test(                                                                     \
        #Test, []() -> std::unique_ptr<QObject> { return std::make_unique<Test>(); }, inApplication);

/// Adds columns to a test's data and returns what adds a row:
/// `const auto row = columns<QString, int>("text", "length"); row("nothing", QString(), 0);`
template <class... Values, class... Names>
auto columns(Names... names)
{
    (QTest::addColumn<Values>(names), ...);
    return [](const QByteArray &tag, const Values &...values) { (QTest::newRow(tag) << ... << values); };
}

/// A test that runs as a check does, see `runMarovendaCheck`.
#define MAROVENDA_TEST(Test) MAROVENDA_TEST_AS(Test, true)

/// A test that makes its applications itself.
#define MAROVENDA_TEST_WITHOUT_APPLICATION(Test) MAROVENDA_TEST_AS(Test, false)

#include "MarovendaTest.h"
#include "ParseDecimal.h"

#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Makes a locale with a decimal comma in a folder and gives it to the process, since a system may have none of its
/// own. False with the problem when that fails.
bool useCommaLocale(const QString &folder, QString &problem)
{
    QFile source(folder + u"/source"_s);
    if (!source.open(QIODevice::WriteOnly) ||
        source.write("LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"<U002E>\"\ngrouping 3;3\n"
                     "END LC_NUMERIC\n") < 0) {
        problem = source.errorString();
        return false;
    }
    source.close();
    // The other categories are missing, so it needs to be told to go on, and its exit status says little.
    // QProcess cannot start a program where QEMU runs this test for another processor.
    QByteArrayList words = QByteArray("localedef --quiet -c -f UTF-8 -i").split(' ');
    words << source.fileName().toLocal8Bit() << (folder + u"/comma"_s).toLocal8Bit();
    std::vector<char *> arguments;
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t localedef = 0;
    const int error = ::posix_spawnp(&localedef, arguments[0], nullptr, nullptr, arguments.data(), environ);
    problem = error ? qt_error_string(error) : u"localedef has made no locale"_s;
    if (error || ::waitpid(localedef, nullptr, 0) < 0)
        return false;
    qputenv("LOCPATH", folder.toLocal8Bit());
    return std::setlocale(LC_NUMERIC, "comma") && qstrcmp(std::localeconv()->decimal_point, ",") == 0;
}

} // namespace

class ParseDecimalTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsAsCDoes_data();
    void readsAsCDoes();
    void localeOfTheProcessDoesNotMatter();
};

void ParseDecimalTest::readsAsCDoes_data()
{
    const auto add = columns<QString, double>("text", "number");
    const double infinity = std::numeric_limits<double>::infinity();
    const auto row = [&add](const QString &text, double number) {
        add('"' + text.toUtf8().toPercentEncoding("., +") + '"', text, number);
    };
    row(u""_s, 0);
    row(u"12.5"_s, 12.5);
    row(u"1e2"_s, 100);
    row(u"+5"_s, 5);
    row(u"-5"_s, -5);
    row(u"5."_s, 5);
    row(u".5"_s, 0.5);
    row(u"007"_s, 7);
    row(u"0x1p3"_s, 8);
    row(u"0X10"_s, 16);
    row(u"inf"_s, infinity);
    row(u"-INFINITY"_s, -infinity);
    row(u"nan"_s, std::numeric_limits<double>::quiet_NaN());
    row(u"NaN"_s, std::numeric_limits<double>::quiet_NaN());
    row(u"1e999"_s, infinity);
    row(u"1e-999"_s, 0);
    row(u"0.1"_s, 0.1);
    row(u"179769313486231570000000000000000000000"_s, 179769313486231570000000000000000000000.0);
    for (const QString &bad :
         {u"1,5"_s, u"12,5"_s, u"1.000,5"_s,  u"1 "_s,      u" 1"_s,    u"\t1"_s,   u"\n1"_s, u"\v1"_s,
          u"\f1"_s, u"\r1"_s,  u"1\n"_s,      u"\u00A01"_s, u"abc"_s,   u"1a"_s,    u"1e"_s,  u"1e+"_s,
          u"."_s,   u"+"_s,    u"-"_s,        u"--1"_s,     u"+-1"_s,   u"5 lbs"_s, u"$5"_s,  u"٥"_s,
          u"５"_s,  u"−5"_s,   u"infinite"_s, u"0x"_s,      u"1_000"_s, u"1.2.3"_s})
        row(bad, 0);
    row(u"5"_s + QChar(0) + u"5"_s, 0);
    row(u"5"_s + QChar(0), 0);
}

void ParseDecimalTest::readsAsCDoes()
{
    QFETCH(QString, text);
    QFETCH(double, number);
    const double found = parseDecimal(text);
    if (std::isnan(number))
        QVERIFY(std::isnan(found));
    else
        QVERIFY2(found == number, qPrintable(QString::number(found)));
}

void ParseDecimalTest::localeOfTheProcessDoesNotMatter()
{
    const QTemporaryDir folder;
    const auto restore = qScopeGuard([before = qgetenv("LOCPATH")] {
        std::setlocale(LC_ALL, "C");
        before.isNull() ? qunsetenv("LOCPATH") : qputenv("LOCPATH", before);
    });
    QString problem;
    QVERIFY2(useCommaLocale(folder.path(), problem), qPrintable(problem));
    // What reads by the process's locale wants a comma now.
    QCOMPARE(std::strtod("12,5", nullptr), 12.5);
    QCOMPARE(std::strtod("12.5", nullptr), 12.0);
    QCOMPARE(parseDecimal(u"12.5"_s), 12.5);
    QCOMPARE(parseDecimal(u"12,5"_s), 0);
}

MAROVENDA_TEST(ParseDecimalTest)
#include "tst_ParseDecimal.moc"

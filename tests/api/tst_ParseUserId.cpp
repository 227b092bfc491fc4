#include "MarovendaTest.h"
#include "ParseUserId.h"

#include <QTest>

using namespace Qt::StringLiterals;

class ParseUserIdTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsDecimalIntegersOnly_data();
    void readsDecimalIntegersOnly();
    void absentIsNobody();
};

void ParseUserIdTest::readsDecimalIntegersOnly_data()
{
    const auto add = columns<QString, qint64>("text", "number");
    const auto row = [&add](const QString &text, qint64 number) { add(text.toUtf8(), text, number); };
    row(u"42"_s, 42);
    row(u"0"_s, 0);
    row(u"+42"_s, 42);
    row(u"-7"_s, -7);
    row(u"007"_s, 7);
    row(u"-0"_s, 0);
    row(u"9223372036854775807"_s, std::numeric_limits<qint64>::max());
    row(u"-9223372036854775808"_s, std::numeric_limits<qint64>::min());
    row(u"+9223372036854775807"_s, std::numeric_limits<qint64>::max());
    row(u"9223372036854775808"_s, 0);
    row(u"-9223372036854775809"_s, 0);
    row(u"00000000000000000000000000000042"_s, 42);
    for (const QString &bad :
         {u""_s,    u"+"_s,    u"-"_s,    u"++1"_s,      u"--1"_s, u"+-1"_s,  u"-+1"_s,     u" 42"_s,
          u"42 "_s, u"4 2"_s,  u"42\n"_s, u"\u00A042"_s, u"abc"_s, u"42a"_s,  u"4.2"_s,     u"4,200"_s,
          u"1e3"_s, u"0x2A"_s, u"٤٢"_s,   u"４２"_s,     u"−7"_s,  u"null"_s, u"42\u0000"_s})
        row(bad, 0);
}

void ParseUserIdTest::readsDecimalIntegersOnly()
{
    QFETCH(QString, text);
    QFETCH(qint64, number);
    QCOMPARE(parseUserId(text), number);
}

void ParseUserIdTest::absentIsNobody() { QCOMPARE(parseUserId(std::nullopt), 0); }

MAROVENDA_TEST(ParseUserIdTest)
#include "tst_ParseUserId.moc"

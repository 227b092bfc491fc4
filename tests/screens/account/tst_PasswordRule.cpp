#include "MarovendaTest.h"
#include "PasswordRule.h"

#include <QTest>

using namespace Qt::StringLiterals;

class PasswordRuleTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void passwordIsAllowed_data();
    void passwordIsAllowed();
};

void PasswordRuleTest::passwordIsAllowed_data()
{
    const auto add = columns<QString, bool>("password", "allowed");
    add("nothing", QString(), false);
    add("capital and stop", u"A."_s, true);
    add("stop and capital", u".A"_s, true);
    add("capital alone", u"A"_s, false);
    add("special alone", u"."_s, false);
    add("first and last capital", u"A.Z"_s, true);
    add("only Z", u"z.Z"_s, true);
    add("no capital", u"clave.1"_s, false);
    add("no special", u"Clave1"_s, false);
    add("between Z and a", u"[a"_s, false);
    add("before A", u"@a"_s, false);
    add("capital last", u"........................................A"_s, true);
    add("special last", u"Aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!"_s, true);
    // What counts as a capital.
    add("capital Ñ", u"Ñ."_s, false);
    add("capital É", u"É."_s, false);
    add("E with a combining accent", u"E\u0301."_s, true);
    add("Cyrillic А", u"\u0410."_s, false);
    add("Greek Α", u"\u0391."_s, false);
    add("wide Ａ", u"\uFF21."_s, false);
    add("mathematical 𝐀", u"\U0001D400."_s, false);
    // What counts as special.
    add("underscore", u"A_"_s, true);
    add("blank inside", u"A b"_s, true);
    add("no-break space", u"A\u00A0b"_s, true);
    add("zero-width space", u"A\u200B"_s, true);
    add("ASCII digit", u"A7"_s, false);
    add("small ñ", u"Añ"_s, false);
    add("small é", u"Aé"_s, false);
    add("Cyrillic letter", u"A\u0434"_s, false);
    add("Chinese character", u"A漢"_s, false);
    add("feminine ª", u"Aª"_s, false);
    add("superscript ²", u"A²"_s, true);
    add("fraction ½", u"A½"_s, true);
    add("Roman Ⅷ", u"AⅧ"_s, false);
    add("circled Ⓐ", u"A\u24B6"_s, false);
    add("undertie ‿", u"A‿"_s, false);
    add("wide underscore", u"A\uFF3F"_s, false);
    add("combining accent", u"A\u0301"_s, false);
    add("enclosing mark", u"A\u20DD"_s, false);
    add("Arabic digit", u"A\u0663"_s, false);
    add("inverted ¿", u"A¿"_s, true);
    add("euro", u"A€"_s, true);
    add("emoji", u"A\U0001F600"_s, true);
    add("letter beyond 16 bits", u"A\U00010400"_s, false);
    // The rule is looked for within a line, and what ends a line is special.
    for (const char16_t end : {u'\n', u'\v', u'\f', u'\r', u'\u0085', u'\u2028', u'\u2029'}) {
        const QByteArray name = QByteArray::number(end, 16);
        add(name + " after a capital", u"A"_s + end + u"b"_s, true);
        add(name + " before a capital", u"a"_s + end + u"B"_s, false);
        add(name + " between stop and capital", u"a."_s + end + u"B"_s, false);
        add(name + " before capital and stop", u"a"_s + end + u"B."_s, true);
    }
    add("half a pair", QString(u"A"_s + QChar(0xD83D)), true);
}

void PasswordRuleTest::passwordIsAllowed()
{
    QFETCH(QString, password);
    QFETCH(bool, allowed);
    QCOMPARE(isAllowedPassword(password), allowed);
}

MAROVENDA_TEST(PasswordRuleTest)
#include "tst_PasswordRule.moc"

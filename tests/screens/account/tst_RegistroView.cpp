#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What a registration checks and trims before it is sent.
class RegistroViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void passwordMustFollowTheRule_data();
    void passwordMustFollowTheRule();
    void blanksAroundAreNotSent_data();
    void blanksAroundAreNotSent();

private:
    static constexpr std::array fields{"nom", "email", "direccion", "ciudad", "pass"};

    static void fill(const TestScreen &screen)
    {
        for (const char *field : fields)
            screen.enter(QString::fromLatin1(field), u"A."_s);
    }
    /// What is sent now is the first that comes.
    void verifyNothingWasSent(const TestScreen &screen) const
    {
        fill(screen);
        screen.enter(u"nom"_s, u"Primera"_s);
        screen.press(u"registrar"_s);
        QTRY_VERIFY(!server.requests().isEmpty());
        QCOMPARE(sent("/api_registro.php").first().value("nombre"_L1).toString(), u"Primera"_s);
    }
};

void RegistroViewTest::passwordMustFollowTheRule_data()
{
    const auto row = columns<QString>("password");
    row("no capital", u"clave.1"_s);
    row("special only outside", u" Clave "_s);
}

void RegistroViewTest::passwordMustFollowTheRule()
{
    QFETCH(const QString, password);
    const TestScreen screen("RegistroView {}");
    fill(screen);
    screen.enter(u"pass"_s, password);
    screen.press(u"registrar"_s);
    QCOMPARE(screen.text(u"msg"_s), u"La contraseña debe incluir al menos una mayúscula y un carácter especial"_s);
    QCOMPARE(screen.text(u"pass"_s), password);
    verifyNothingWasSent(screen);
}

void RegistroViewTest::blanksAroundAreNotSent_data()
{
    const auto add = columns<QString, bool>("blank", "trimmed");
    add("ASCII", u" \t\n\r"_s, true);
    add("Unicode", u"\u0085\u00A0\u2003\u202F\u3000\u2028\u2029"_s, true);
    add("zero-width space", u"\u200B"_s, false);
    add("zero-width joiner", u"\u200D"_s, false);
    add("word joiner", u"\u2060"_s, false);
}

void RegistroViewTest::blanksAroundAreNotSent()
{
    QFETCH(const QString, blank);
    QFETCH(const bool, trimmed);
    const TestScreen screen("RegistroView {}");
    const auto typed = [&](const char *field) { return blank + u"A. "_s + QLatin1String(field) + blank; };
    for (const char *field : fields)
        screen.enter(QString::fromLatin1(field), typed(field));
    screen.press(u"registrar"_s);
    waitForRequests(1);
    const QJsonObject body = sent("/api_registro.php").first();
    const QHash<QString, const char *> keys{{u"nombre"_s, "nom"},
                                            {u"email"_s, "email"},
                                            {u"direccion"_s, "direccion"},
                                            {u"ciudad"_s, "ciudad"},
                                            {u"password"_s, "pass"}};
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        QCOMPARE(body.value(key.key()).toString(), trimmed ? u"A. "_s + QLatin1String(*key) : typed(*key));
        // The field keeps what was typed.
        QCOMPARE(screen.text(QString::fromLatin1(*key)), typed(*key));
    }
}

MAROVENDA_TEST(RegistroViewTest)
#include "tst_RegistroView.moc"

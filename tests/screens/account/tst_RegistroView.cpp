#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What a registration checks and trims before it is sent.
class RegistroViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void blankFieldIsMissing_data();
    void blankFieldIsMissing();
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

void RegistroViewTest::blankFieldIsMissing_data()
{
    QTest::addColumn<QString>("field");
    for (const char *field : fields)
        QTest::newRow(field) << QString::fromLatin1(field);
}

void RegistroViewTest::blankFieldIsMissing()
{
    QFETCH(const QString, field);
    const TestScreen screen("RegistroView {}");
    fill(screen);
    screen.enter(u"pass"_s, u"corta"_s); // breaks the rule too, which is looked at later
    screen.enter(field, u" \u00A0\u2003 "_s);
    screen.press(u"registrar"_s);
    QCOMPARE(screen.text(u"msg"_s), u"Por favor completa todos los campos"_s);
    verifyNothingWasSent(screen);
}

void RegistroViewTest::passwordMustFollowTheRule_data()
{
    QTest::addColumn<QString>("password");
    QTest::newRow("no capital") << u"clave.1"_s;
    QTest::newRow("special only outside") << u" Clave "_s;
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
    QTest::addColumn<QString>("blank");
    QTest::addColumn<bool>("trimmed");
    const auto add = [](const char *name, const QString &blank, bool trimmed) {
        QTest::newRow(name) << blank << trimmed;
    };
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

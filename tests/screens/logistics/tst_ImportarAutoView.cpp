#include "FormTest.h"
#include "MarovendaTest.h"

using namespace Qt::StringLiterals;

class ImportarAutoViewTest : public FormTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { signIn(); }
    void cleanup() { ServiceTest::cleanup(); }

    void startsAsDesigned();
    void untouchedFormIsSentAsItStands();
    void typedFormIsSentByteForByte_data();
    void typedFormIsSentByteForByte();
    void successKeepsWhatWasTyped();
    void failureIsToldAndKeepsWhatWasTyped_data();
    void failureIsToldAndKeepsWhatWasTyped();
    void nothingChangesWhileSending();
    void lastReplyWins();

private:
    static constexpr std::array fields{"marca", "modelo", "anio", "ubicacion"};

    static QByteArray form() { return "ImportarAutoView {}"; }
    static void fillAll(TestScreen &screen, const QStringList &texts)
    {
        for (std::size_t i = 0; i < fields.size(); ++i)
            fill(screen, fields[i], texts[static_cast<qsizetype>(i)]);
    }
    static QStringList typed(TestScreen &screen)
    {
        QStringList all;
        for (const char *field : fields)
            all.append(text(screen, field));
        return all;
    }
};

void ImportarAutoViewTest::startsAsDesigned()
{
    TestScreen screen(form());
    const QStringList order{u"Importar Vehículo"_s,   u"Marca (Ej: Toyota)"_s,   u"Modelo (Ej: Corolla)"_s, u"Año"_s,
                            u"Ubicación o Subasta"_s, u"Solicitar Importación"_s};
    QCOMPARE(screen.texts(), order);
    QCOMPARE(screen.names(), order);
    QVERIFY(screen.find(u"anio"_s)->property("isDecimal").toBool());
    for (const QString &name : {u"marca"_s, u"modelo"_s, u"ubicacion"_s})
        QVERIFY(!screen.find(name)->property("isDecimal").toBool());
}

void ImportarAutoViewTest::untouchedFormIsSentAsItStands()
{
    TestScreen screen(form());
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().path, "/api_auto.php");
    QCOMPARE(server.requests().first().body, R"({"user_id":42,"marca":"","modelo":"","anio":"","ubicacion":""})");
}

void ImportarAutoViewTest::typedFormIsSentByteForByte_data()
{
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("slash and accent")
        << QStringList({u"Toyota"_s, u"Corolla/LE"_s, u"2019"_s, u"Subasta Ñ"_s})
        << QByteArray(R"("marca":"Toyota","modelo":"Corolla\/LE","anio":"2019","ubicacion":"Subasta Ñ")");
    QTest::newRow("blanks around and inside")
        << QStringList({u" Land  Rover "_s, u"  CR  V "_s, u" 20  19 "_s, u" Lote  7  "_s})
        << QByteArray(R"("marca":" Land  Rover ","modelo":"  CR  V ","anio":" 20  19 ","ubicacion":" Lote  7  ")");
    QTest::newRow("blanks only") << QStringList({u" "_s, u"  "_s, u" "_s, u"   "_s})
                                 << QByteArray(R"("marca":" ","modelo":"  ","anio":" ","ubicacion":"   ")");
}

void ImportarAutoViewTest::typedFormIsSentByteForByte()
{
    QFETCH(QStringList, typed);
    QFETCH(QByteArray, sent);
    TestScreen screen(form());
    fillAll(screen, typed);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().body, QByteArray(R"({"user_id":42,)" + sent + "}"));
}

void ImportarAutoViewTest::successKeepsWhatWasTyped()
{
    server.reply("/api_auto.php", R"({"status":"success","message":"Hola"})");
    TestScreen screen(form());
    fillAll(screen, {u"a"_s, u"b"_s, u"c"_s, u"d"_s});
    press(screen);
    QTRY_COMPARE(msg(screen), u"Solicitud enviada"_s);
    press(screen);
    waitForRequests(2);
    QCOMPARE(server.requests()[0].body, server.requests()[1].body);
    QCOMPARE(typed(screen), QStringList({u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
}

void ImportarAutoViewTest::failureIsToldAndKeepsWhatWasTyped_data() { addFailures(); }

void ImportarAutoViewTest::failureIsToldAndKeepsWhatWasTyped()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    server.reply("/api_auto.php", reply, status);
    TestScreen screen(form());
    fillAll(screen, {u"a"_s, u"b"_s, u"c"_s, u"d"_s});
    press(screen);
    QTRY_COMPARE(msg(screen), u"Error al enviar"_s);
    QCOMPARE(typed(screen), QStringList({u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
}

void ImportarAutoViewTest::nothingChangesWhileSending()
{
    server.hold("/api_auto.php");
    TestScreen screen(form());
    press(screen);
    waitForRequests(1);
    QCOMPARE(msg(screen), QString());
    QVERIFY(screen.find(u"enviar"_s)->isEnabled());
}

void ImportarAutoViewTest::lastReplyWins()
{
    server.hold("/api_auto.php");
    TestScreen screen(form());
    press(screen);
    press(screen);
    waitForRequests(2);
    server.held[1]->send("{}");
    QTRY_COMPARE(msg(screen), u"Error al enviar"_s);
    server.held[0]->send(R"({"status":"success"})");
    QTRY_COMPARE(msg(screen), u"Solicitud enviada"_s);
}

MAROVENDA_TEST_MAIN(ImportarAutoViewTest)
#include "tst_ImportarAutoView.moc"

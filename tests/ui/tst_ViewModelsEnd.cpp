#include "MarovendaTest.h"
#include "PlainViewModel.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

/// What an exchange is to the application.
class Holder : public QObject {
public:
    Holder(std::function<void()> finished, QObject *parent) : QObject(parent), m_finished(std::move(finished)) {}

private:
    std::function<void()> m_finished;
};

/// View models that something still holds when the application ends. Each case has an application of its own; one
/// that does not end is ended by the test's time limit.
class ViewModelsEndTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void goesWithWhatHoldsIt_data();
    void goesWithWhatHoldsIt();
};

void ViewModelsEndTest::goesWithWhatHoldsIt_data()
{
    QTest::addColumn<QString>("holder");
    QTest::newRow("a job for the application") << u"application"_s;
    QTest::newRow("a job for itself") << u"itself"_s;
    QTest::newRow("an exchange that is under way") << u"child"_s;
}

void ViewModelsEndTest::goesWithWhatHoldsIt()
{
    QFETCH(const QString, holder);
    QPointer<PlainViewModel> viewModel;
    bool called = false;
    const auto leaveBehind = [&] {
        qmlRegisterType<PlainViewModel>("Plain", 1, 0, "PlainViewModel");
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQml\nimport Plain\n"
                          "QtObject { property PlainViewModel it: PlainViewModel {} }",
                          QUrl());
        const std::unique_ptr<QObject> page(component.create());
        viewModel = page->property("it").value<PlainViewModel *>();
        const auto job = [held = viewModel->hold(), &called] { called = true; };
        if (holder == u"child")
            new Holder(job, QCoreApplication::instance());
        else
            QMetaObject::invokeMethod(holder == u"itself" ? static_cast<QObject *>(viewModel)
                                                          : QCoreApplication::instance(),
                                      job, Qt::QueuedConnection);
        return 0;
    };
    QByteArray name("test");
    int argc = 1;
    char *argv[] = {name.data(), nullptr};
    runMarovendaCheck(leaveBehind, argc, argv);
    QVERIFY(!viewModel);
    QVERIFY(!called);
}

QTEST_APPLESS_MAIN(ViewModelsEndTest)
#include "tst_ViewModelsEnd.moc"

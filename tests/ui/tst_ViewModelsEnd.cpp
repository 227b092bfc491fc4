#include "MarovendaTest.h"
#include "PhotoLoader.h"
#include "PlainViewModel.h"
#include "StalledFile.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTemporaryDir>
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
    void isDeletedWithWhatHoldsIt_data();
    void isDeletedWithWhatHoldsIt();
    void isDeletedWhileAFileStalls();

private:
    QPointer<PlainViewModel> m_viewModel;

    /// The view model of a page that has gone, and that what this returns holds.
    std::shared_ptr<ViewModel> abandoned()
    {
        qmlRegisterType<PlainViewModel>("Plain", 1, 0, "PlainViewModel");
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQml\nimport Plain\n"
                          "QtObject { property PlainViewModel it: PlainViewModel {} }",
                          QUrl());
        const std::unique_ptr<QObject> page(component.create());
        m_viewModel = page->property("it").value<PlainViewModel *>();
        return m_viewModel->hold();
    }
    static void inAnApplication(const std::function<int()> &body)
    {
        QByteArray name("test");
        int argc = 1;
        char *argv[] = {name.data(), nullptr};
        runMarovendaCheck(body, argc, argv);
    }
};

void ViewModelsEndTest::isDeletedWithWhatHoldsIt_data()
{
    QTest::addColumn<QString>("holder");
    QTest::newRow("a job for the application") << u"application"_s;
    QTest::newRow("a job for itself") << u"itself"_s;
    QTest::newRow("an exchange that is under way") << u"child"_s;
}

void ViewModelsEndTest::isDeletedWithWhatHoldsIt()
{
    QFETCH(const QString, holder);
    bool called = false;
    inAnApplication([&] {
        const auto job = [held = abandoned(), &called] { called = true; };
        if (holder == u"child")
            new Holder(job, QCoreApplication::instance());
        else
            QMetaObject::invokeMethod(holder == u"itself" ? static_cast<QObject *>(m_viewModel)
                                                          : QCoreApplication::instance(),
                                      job, Qt::QueuedConnection);
        return 0;
    });
    QVERIFY(!m_viewModel);
    QVERIFY(!called);
}

void ViewModelsEndTest::isDeletedWhileAFileStalls()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"photo"_s);
    QVERIFY(QFile(path).open(QFile::WriteOnly));
    const StalledFile stalled(path);
    bool called = false;
    inAnApplication([&] {
        loadPhoto(QUrl::fromLocalFile(path), qApp,
                  [held = abandoned(), &called](const LoadedPhoto &) { called = true; });
        return QTest::qWaitFor([&] { return stalled.isWaitedFor(); });
    });
    QVERIFY(stalled.isWaitedFor());
    QVERIFY(!m_viewModel);
    QVERIFY(!called);
}

MAROVENDA_TEST_WITHOUT_APPLICATION(ViewModelsEndTest)
#include "tst_ViewModelsEnd.moc"

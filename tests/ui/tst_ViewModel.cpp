#include "MarovendaTest.h"
#include "PlainViewModel.h"

#include <QPointer>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

/// A page of Qt's own items, with a view model that its functions know by id.
class ViewModelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qmlRegisterType<PlainViewModel>("Plain", 1, 0, "PlainViewModel"); }
    void init();
    void cleanup() { m_page.reset(); }
    void isDeletedWithItsPage();
    void outlivesItsPageUntilItsCompletion();
    void outlivesTheEngineUntilItsCompletion();

private:
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QObject> m_page;
    QPointer<PlainViewModel> m_viewModel;
};

void ViewModelTest::init()
{
    m_page.reset();
    m_engine = std::make_unique<QQmlEngine>();
    QQmlComponent component(m_engine.get());
    component.setData("import QtQuick\nimport Plain\n"
                      "Item { id: page; function it() { return viewModel }\n"
                      "    Item { id: area; PlainViewModel { id: viewModel } } }",
                      QUrl());
    m_page.reset(component.create());
    QVERIFY2(m_page, qUtf8Printable(component.errorString()));
    QVariant found;
    QVERIFY(QMetaObject::invokeMethod(m_page.get(), "it", Q_RETURN_ARG(QVariant, found)));
    m_viewModel = qobject_cast<PlainViewModel *>(found.value<QObject *>());
    QVERIFY(m_viewModel);
}

void ViewModelTest::isDeletedWithItsPage()
{
    // Not a turn later: by then Qt would look for the page in freed memory.
    m_page.reset();
    QVERIFY(!m_viewModel);
}

void ViewModelTest::outlivesItsPageUntilItsCompletion()
{
    auto held = m_viewModel->hold();
    QPointer<QQmlContext> context = qmlContext(m_viewModel);
    QVERIFY(context);
    bool contextWasThere = true;
    connect(m_viewModel, &QObject::destroyed, this, [&] { contextWasThere = !context.isNull(); });
    m_page.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(m_viewModel);
    held.reset();
    QTRY_VERIFY(!m_viewModel);
    QVERIFY(!contextWasThere);
}

void ViewModelTest::outlivesTheEngineUntilItsCompletion()
{
    auto held = m_viewModel->hold();
    m_page.reset();
    m_engine.reset();
    QVERIFY(m_viewModel);
    held.reset();
    QTRY_VERIFY(!m_viewModel);
}

MAROVENDA_TEST(ViewModelTest)
#include "tst_ViewModel.moc"

#include "MarovendaTest.h"
#include "PlainViewModel.h"

#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

/// A page of Qt's own items, with a view model that one of them shows.
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
                      "Item { id: page; property PlainViewModel viewModel: PlainViewModel {}\n"
                      "    Item { objectName: page.viewModel.objectName } }",
                      QUrl());
    m_page.reset(component.create());
    QVERIFY2(m_page, qUtf8Printable(component.errorString()));
    m_viewModel = m_page->property("viewModel").value<PlainViewModel *>();
    QVERIFY(m_viewModel);
}

void ViewModelTest::isDeletedWithItsPage()
{
    m_page.reset();
    QVERIFY(!m_viewModel);
}

void ViewModelTest::outlivesItsPageUntilItsCompletion()
{
    auto held = m_viewModel->hold();
    m_page.reset();
    QVERIFY(m_viewModel);
    m_viewModel->setObjectName(u"changed"_s);
    held.reset();
    QVERIFY(!m_viewModel);
}

void ViewModelTest::outlivesTheEngineUntilItsCompletion()
{
    auto held = m_viewModel->hold();
    m_page.reset();
    m_engine.reset();
    QVERIFY(m_viewModel);
    held.reset();
    QVERIFY(!m_viewModel);
}

MAROVENDA_TEST(ViewModelTest)
#include "tst_ViewModel.moc"

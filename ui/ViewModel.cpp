#include "ViewModel.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QTimer>

ViewModel::ViewModel(QObject *parent) : QObject(parent) {}

void ViewModel::componentComplete()
{
    QObject *const page = parent();
    if (!page)
        return;
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    setParent(nullptr);
    m_engine = qmlEngine(this);
    m_self = std::shared_ptr<ViewModel>(this, [](ViewModel *gone) { gone->end(); });
    connect(page, &QObject::destroyed, this, [this] {
        const QPointer<ViewModel> self(this);
        m_pageIsGoing = true;
        m_self.reset();
        if (self)
            m_pageIsGoing = false;
    });
}

/// As an object with an id goes, Qt 6.4 asks the page whose context knows the id whether it is going too. That is
/// safe while the page is being destroyed, and again when its context is gone, which the garbage collector may keep
/// until then.
void ViewModel::end()
{
    if (m_pageIsGoing) {
        delete this;
        return;
    }
    const QQmlContext *const context = qmlContext(this);
    if (!context) {
        deleteLater();
        return;
    }
    connect(context, &QObject::destroyed, this, &QObject::deleteLater);
    // Not now: whoever let go of this may have been called by the engine.
    if (m_engine)
        QTimer::singleShot(0, m_engine, [engine = m_engine] { engine->collectGarbage(); });
}

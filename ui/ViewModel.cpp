#include "ViewModel.h"

#include <QCoreApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QTimer>

namespace {

/// Deletes the events that are still in the main thread's queue when the application ends. Qt would delete them while
/// it holds the queue's lock; a view model that was deleted with its last event would wait for the same lock.
void dropJobs()
{
    QCoreApplication::removePostedEvents(nullptr, QEvent::MetaCall);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void dropJobsAtTheEnd() { qAddPostRoutine(dropJobs); }

} // namespace

Q_COREAPP_STARTUP_FUNCTION(dropJobsAtTheEnd)

ViewModel::ViewModel(QObject *parent) : QObject(parent) {}

void ViewModel::componentComplete()
{
    QObject *const page = parent();
    if (!page)
        return;
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    setParent(nullptr);
    m_engine = qmlEngine(this);
    m_self = std::shared_ptr<ViewModel>(this, [](ViewModel *viewModel) { viewModel->destroy(); });
    connect(page, &QObject::destroyed, this, [this] {
        const QPointer<ViewModel> self(this);
        m_pageIsBeingDestroyed = true;
        m_self.reset();
        if (self)
            m_pageIsBeingDestroyed = false;
    });
}

/// When an object with an id is destroyed, Qt 6.4 uses the page whose context contains the id. That is safe while the
/// page is being destroyed, or after its context has been destroyed. The garbage collector may keep the context
/// longer than the page, but not longer than the engine.
void ViewModel::destroy()
{
    if (m_pageIsBeingDestroyed || !m_engine) {
        delete this;
        return;
    }
    const QQmlContext *const context = qmlContext(this);
    if (!context) {
        deleteLater();
        return;
    }
    connect(context, &QObject::destroyed, this, &QObject::deleteLater);
    // Do not collect garbage now: the engine may be calling the code that released this.
    QTimer::singleShot(0, m_engine, [engine = m_engine] { engine->collectGarbage(); });
}

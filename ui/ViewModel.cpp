#include "ViewModel.h"

#include <QCoreApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QTimer>

namespace {

/// What still waits in the main thread's queue when the application ends goes here. Qt would delete it while it keeps
/// the queue locked, and for that lock a view model would wait that goes with its last job.
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
/// until then, and the engine at most.
void ViewModel::end()
{
    if (m_pageIsGoing || !m_engine) {
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
    QTimer::singleShot(0, m_engine, [engine = m_engine] { engine->collectGarbage(); });
}

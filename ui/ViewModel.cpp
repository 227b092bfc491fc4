#include "ViewModel.h"

#include <QCoreApplication>
#include <QQmlEngine>

namespace {

/// Deletes the events that are still in the main thread's queue when the application ends. Qt would delete them while
/// it holds the queue's lock; a view model that was deleted with its last event would wait for the same lock.
void dropJobs() { QCoreApplication::removePostedEvents(nullptr, QEvent::MetaCall); }

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
    m_self.reset(this);
    connect(page, &QObject::destroyed, this, [this] { m_self.reset(); });
}

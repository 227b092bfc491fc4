#include "ViewModel.h"

#include <QJSEngine>

ViewModel::ViewModel(QObject *parent) : QObject(parent) {}

void ViewModel::componentComplete()
{
    QObject *const page = parent();
    if (!page)
        return;
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    setParent(nullptr);
    m_self = std::shared_ptr<ViewModel>(this, [](ViewModel *gone) { gone->deleteLater(); });
    connect(page, &QObject::destroyed, this, [this] { m_self.reset(); });
}

#include "UnfinishedText.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>

void UnfinishedText::commit()
{
    QGuiApplication::inputMethod()->commit();
    // Not every input method supports this call (https://doc.qt.io/qt-6/qinputmethod.html#commit).
    commitIn(QGuiApplication::focusObject());
}

void UnfinishedText::commitIn(QObject *field)
{
    const QString left = field ? field->property("preeditText").toString() : QString();
    if (left.isEmpty())
        return;
    QInputMethodEvent finished;
    finished.setCommitString(left);
    QCoreApplication::sendEvent(field, &finished);
    if (field == QGuiApplication::focusObject())
        QGuiApplication::inputMethod()->reset();
}

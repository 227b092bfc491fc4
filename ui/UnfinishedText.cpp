#include "UnfinishedText.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>

void UnfinishedText::commit()
{
    QInputMethod *const method = QGuiApplication::inputMethod();
    method->commit();
    // Not every input method answers to that (https://doc.qt.io/qt-6/qinputmethod.html#commit).
    QObject *const field = QGuiApplication::focusObject();
    const QString left = field ? field->property("preeditText").toString() : QString();
    if (left.isEmpty())
        return;
    QInputMethodEvent finished;
    finished.setCommitString(left);
    QCoreApplication::sendEvent(field, &finished);
    method->reset();
}

#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

struct Field {
    QString name;
    /// What is typed into it here.
    QString typed;
    bool decimal = false;
    /// What it holds at first.
    QString initial = {};
};

/// A form as its customer and its service know it.
struct Form {
    QByteArray view;
    /// What a screen reader reads, from top to bottom.
    QStringList read;
    QList<Field> fields;
    QString button;
    QByteArray path;
    /// What is sent of the form as typed.
    QByteArray body;
    /// What is sent of the untouched form, or what is shown where it is not sent.
    QByteArray untouchedBody;
    QString incomplete;
    /// What counts as an empty field too.
    QString blank = {};
    /// What is shown after a refusal; where `showsMessage`, only if the reply has no message.
    QString failure;
    bool showsMessage = false;
    /// What is shown after a success; empty for a form that signs in.
    QString success = {};
    bool emptiesOnSuccess = false;
    bool emptyMessageTakesALine = true;
};

/// The forms of the app.
const QList<Form> &forms();

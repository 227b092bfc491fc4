#pragma once

#include "Session.h"

/// Declares functions of a view model that read and write a value of the session, under the value's own name. Layouts
/// cannot use them.
#define SESSION_VALUE(Type, name, setter)                                                                            \
public:                                                                                                              \
    static Type name() { return Session::instance().name(); }                                                        \
    static void setter(const Type &value) { Session::instance().setter(value); }                                     \
                                                                                                                     \
private:

/// Also declares a read-only property that layouts can bind; its change signal is emitted whenever the session's
/// value changes. The class must declare `using Self = …`.
#define SESSION_STATE(Type, name, setter)                                                                            \
    Q_PROPERTY(Type name READ name NOTIFY name##Changed)                                                             \
    SESSION_NOTIFYING_VALUE(Type, name, setter)

/// The same with a property that layouts can also write.
#define SESSION_FIELD(Type, name, setter)                                                                            \
    Q_PROPERTY(Type name READ name WRITE setter NOTIFY name##Changed)                                                \
    SESSION_NOTIFYING_VALUE(Type, name, setter)

#define SESSION_NOTIFYING_VALUE(Type, name, setter)                                                                  \
    SESSION_VALUE(Type, name, setter)                                                                                \
public:                                                                                                              \
    Q_SIGNAL void name##Changed();                                                                                   \
                                                                                                                     \
private:                                                                                                             \
    const QMetaObject::Connection name##Link =                                                                       \
        QObject::connect(&Session::instance(), &Session::name##Changed, this, &Self::name##Changed);

#pragma once

#include "Session.h"

/// A field of a view model that is one of the session's values: it reads and writes the session under the value's own
/// name, from C++ alone.
#define SESSION_VALUE(Type, name, setter)                                                                            \
public:                                                                                                              \
    static Type name() { return Session::instance().name(); }                                                        \
    static void setter(const Type &value) { Session::instance().setter(value); }                                     \
                                                                                                                     \
private:

/// The same as a property that layouts can bind: it notifies whenever anyone changes the value. The class names
/// itself with `using Self = …`.
#define SESSION_STATE(Type, name, setter)                                                                            \
    Q_PROPERTY(Type name READ name NOTIFY name##Changed)                                                             \
    SESSION_NOTIFYING_VALUE(Type, name, setter)

/// The same for a field that the layout writes too.
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

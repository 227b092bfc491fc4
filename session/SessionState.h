#pragma once

#include "Session.h"

/// A field of a view model that is one of the session's values: a property under the value's own name that reads and
/// writes the session and notifies whenever anyone changes it. The class names itself with `using Self = …`.
#define SESSION_STATE(Type, name, setter)                                                                            \
    Q_PROPERTY(Type name READ name WRITE setter NOTIFY name##Changed)                                                \
public:                                                                                                              \
    Type name() const { return Session::instance().name(); }                                                         \
    void setter(const Type &value) { Session::instance().setter(value); }                                            \
    Q_SIGNAL void name##Changed();                                                                                   \
                                                                                                                     \
private:                                                                                                             \
    const QMetaObject::Connection name##Link =                                                                       \
        QObject::connect(&Session::instance(), &Session::name##Changed, this, &Self::name##Changed);

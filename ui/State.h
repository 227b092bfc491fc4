#pragma once

#include <QObject>
#include <QProperty>

/// Declares a field of a view model: a bindable property that emits its change signal when it is assigned. `initial`
/// is its initial value. The class must declare `using Self = …` first. Read the field with `name.value()`.
#define STATE(Type, name, initial)                                                                                   \
    Q_PROPERTY(Type name READ name##Value WRITE name##Assign NOTIFY name##Changed BINDABLE name##Bindable)           \
public:                                                                                                              \
    Type name##Value() const { return name; }                                                                        \
    void name##Assign(const Type &value) { name = value; }                                                           \
    QBindable<Type> name##Bindable() { return &name; }                                                               \
    Q_SIGNAL void name##Changed();                                                                                   \
                                                                                                                     \
protected:                                                                                                           \
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(Self, Type, name, ([]() -> Type { return initial; }()), &Self::name##Changed)

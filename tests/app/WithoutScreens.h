#pragma once

#include <QQmlAbstractUrlInterceptor>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(Marovenda_AppPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_UiPlugin)

/// Loses the file of the screens that follow the splash.
class WithoutScreens : public QQmlAbstractUrlInterceptor {
public:
    QUrl intercept(const QUrl &url, DataType) override
    {
        return url.fileName() == QLatin1String("FirstScreens.qml") ? QUrl(QStringLiteral("qrc:/missing.qml")) : url;
    }
};

inline void addModules(QQmlEngine &engine)
{
    static WithoutScreens files;
    engine.addUrlInterceptor(&files);
    engine.addImportPath(QStringLiteral("qrc:/"));
}

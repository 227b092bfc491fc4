#pragma once

#include "PhotoDecoder.h"

#include <QObject>
#include <QtQmlIntegration>

/// What of the decoder a layout asks.
class PhotoFormats : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// The names of the files that can be shown, as a dialog's filter takes them: "*.png *.PNG". In small and capital
    /// letters, since not every platform's dialog takes one for the other: cameras write "IMG_1234.JPG".
    Q_PROPERTY(QString patterns READ patterns CONSTANT)
public:
    using QObject::QObject;

    static QString patterns()
    {
        using namespace Qt::StringLiterals;
        QStringList all;
        for (const QString &ending : photoEndings())
            all << u"*."_s + ending << u"*."_s + ending.toUpper();
        return all.join(u' ');
    }
};

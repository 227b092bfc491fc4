#pragma once

#include "PhotoDecoder.h"

#include <QObject>
#include <QtQmlIntegration>

/// The photo formats, for use in QML.
class PhotoFormats : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// The file name patterns for a file dialog's filter, "*.png *.PNG" and so on. Contains both cases, because some
    /// dialogs are case-sensitive and cameras write "IMG_1234.JPG".
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

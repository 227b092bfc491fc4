#pragma once

#include <QAbstractListModel>
#include <QtQmlIntegration>
#include <QUrl>

#include <functional>

/// Pictures as the rows of a list, with the roles "file", a local address, and "name", the file's name without its
/// ending.
class PictureList final : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    void setFiles(const QStringList &files);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QStringList m_files;
};

/// The pictures in the customer's pictures folder and the folders in it, the newest first. The folder is read off the
/// main thread when `refresh` is called.
class PictureFolder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *pictures READ pictures CONSTANT)
    Q_PROPERTY(int count READ count NOTIFY readyChanged)
    /// False from `refresh` until the folder has been read.
    Q_PROPERTY(bool ready READ ready NOTIFY readyChanged)
public:
    /// No more than this many are listed: the newest.
    static constexpr qsizetype most = 2000;

    using QObject::QObject;

    PictureList *pictures() { return &m_pictures; }
    int count() const { return m_pictures.rowCount(); }
    bool ready() const { return m_ready; }
    Q_INVOKABLE void refresh();
    /// The same with the paths that `list` finds for the folder's; it is called off the main thread and may stall,
    /// which a later refresh does not wait for.
    void refreshWith(std::function<QStringList(const QString &folder)> list);

Q_SIGNALS:
    void readyChanged();

private:
    void setReady(bool ready);

    PictureList m_pictures;
    bool m_ready = false;
    /// The latest: only its pictures are shown.
    quint64 m_request = 0;
};

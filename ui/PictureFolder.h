#pragma once

#include <QAbstractListModel>
#include <QtQmlIntegration>
#include <QUrl>

#include <functional>

/// A model of picture files with the roles "file", a local URL, and "name", the file name without its extension.
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

/// The pictures in the customer's pictures folder and its subfolders, newest first. `refresh` reads the folder on
/// another thread.
class PictureFolder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *pictures READ pictures CONSTANT)
    Q_PROPERTY(int count READ count NOTIFY readyChanged)
    /// False from `refresh` until the folder has been read.
    Q_PROPERTY(bool ready READ ready NOTIFY readyChanged)
public:
    /// Only this many pictures are listed, the newest ones.
    static constexpr qsizetype most = 2000;

    using QObject::QObject;

    PictureList *pictures() { return &m_pictures; }
    int count() const { return m_pictures.rowCount(); }
    bool ready() const { return m_ready; }
    Q_INVOKABLE void refresh();
    /// Like `refresh`, but lists the folder with `list`, which is called on another thread. It may stall: later
    /// refreshes do not wait for it.
    void refreshWith(std::function<QStringList(const QString &folder)> list);

Q_SIGNALS:
    void readyChanged();

private:
    void setReady(bool ready);

    PictureList m_pictures;
    bool m_ready = false;
    /// Results of earlier requests are ignored.
    quint64 m_latestRequest = 0;
};

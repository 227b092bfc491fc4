#include "HttpTransport.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace {

/// A body that can be read only once. When a connection is lost, Qt rewinds the body and sends the request again;
/// since this device cannot be rewound, a POST is never sent twice.
class OneShotBody final : public QIODevice {
public:
    OneShotBody(QByteArray bytes, QObject *parent) : QIODevice(parent), m_bytes(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_bytes.size() - m_read + QIODevice::bytesAvailable(); }
    qint64 size() const override { return m_bytes.size(); }
    bool reset() override { return false; }

protected:
    qint64 readData(char *to, qint64 most) override
    {
        const qint64 count = std::min(most, m_bytes.size() - m_read);
        if (count <= 0)
            return m_read == m_bytes.size() ? -1 : 0;
        std::copy_n(m_bytes.constData() + m_read, count, to);
        m_read += count;
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_read = 0;
};

/// Deletes the managers of abandoned exchanges. A manager's destructor waits up to five seconds for its networking
/// thread, which may still be reading from a server that floods it with data.
QThread &abandonedManagers()
{
    static auto *const thread = [] {
        auto *made = new QThread;
        made->setObjectName(QStringLiteral("abandonedManagers"));
        made->start();
        qAddPostRoutine([] {
            abandonedManagers().quit();
            abandonedManagers().wait();
        });
        return made;
    }();
    return *thread;
}

/// One request and its reply. Each exchange has its own manager, because exchanges that share one also share its
/// connections and their faults.
class Exchange final : public QObject {
public:
    Exchange(const HttpRequest &request, std::function<void(HttpReply)> finished, const HttpLimits &limits,
             const HttpObserver &observer)
        : QObject(QCoreApplication::instance()), m_handler(std::move(finished)), m_limits(limits)
    {
        m_reply = send(request);
        // Qt ignores the read buffer's size until the request has started, which takes one turn of the event loop.
        // Without a limit, a server that sends faster than we read fills the memory.
        QMetaObject::invokeMethod(
            m_reply, [this] { m_reply->setReadBufferSize(readBufferSize); }, Qt::QueuedConnection);
        if (observer)
            observer(*m_reply);

        m_silenceTimer.setSingleShot(true);
        // Timers of the other types may fire early.
        m_silenceTimer.setTimerType(Qt::PreciseTimer);
        m_silenceTimer.callOnTimeout(this, [this] { abandon(HttpReply::End::Silent); });
        m_silenceTimer.start(m_limits.silence);

        const auto restartTimer = [this] { m_silenceTimer.start(); };
        connect(m_reply, &QNetworkReply::uploadProgress, this, restartTimer);
        connect(m_reply, &QNetworkReply::downloadProgress, this, restartTimer);
        connect(m_reply, &QNetworkReply::metaDataChanged, this, restartTimer);
        connect(m_reply, &QNetworkReply::encrypted, this, restartTimer);
        connect(m_reply, &QNetworkReply::readyRead, this, [this] { readAvailable(); });
        connect(m_reply, &QNetworkReply::finished, this, [this] { finish(); });
        connect(m_reply, &QNetworkReply::errorOccurred, this, [this](QNetworkReply::NetworkError error) {
            if (error == QNetworkReply::UnknownContentError)
                endAfterDecompressionError();
        });
    }

    ~Exchange() override
    {
        // When the application ends, the thread has already ended.
        if (m_end == HttpReply::End::Platform || QCoreApplication::closingDown())
            return;
        delete m_reply;
        m_manager->setParent(nullptr);
        m_manager->moveToThread(&abandonedManagers());
        m_manager->deleteLater();
    }

private:
    /// Spare capacity after the body, for the JSON parser, which reads a little beyond the end.
    static constexpr qint64 padding = 64;
    static constexpr qint64 chunkSize = qint64(16) * 1024;
    static constexpr qint64 readBufferSize = qint64(256) * 1024;

    QNetworkReply *send(const HttpRequest &request)
    {
        QNetworkRequest qtRequest(request.url);
        qtRequest.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
        qtRequest.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
        qtRequest.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
        qtRequest.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
        qtRequest.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        qtRequest.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        // readAvailable() limits the decompressed size. Qt's own check limits the compression ratio, and would refuse
        // valid replies with many similar rows.
        qtRequest.setDecompressedSafetyCheckThreshold(m_limits.bodySize);
        if (request.method == HttpRequest::Method::Get)
            return m_manager->get(qtRequest);
        qtRequest.setHeader(QNetworkRequest::ContentTypeHeader, request.contentType);
        qtRequest.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
        return m_manager->post(qtRequest, new OneShotBody(request.body, this));
    }

    void readAvailable()
    {
        m_silenceTimer.start();
        if (m_ignoresData)
            return;
        const qint64 contentLength = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (contentLength > m_limits.bodySize)
            return abandon(HttpReply::End::TooLarge);
        reserve(contentLength);
        // Read in small chunks, since a little compressed data may expand enormously.
        for (QByteArray chunk; !(chunk = m_reply->read(chunkSize)).isEmpty();) {
            reserve(m_body.size() + chunk.size());
            m_body += chunk;
            if (m_body.size() > m_limits.bodySize)
                return abandon(HttpReply::End::TooLarge);
        }
    }

    /// Reserves ahead: while the body is reallocated, it is in memory twice.
    void reserve(qint64 size)
    {
        if (size + padding > m_body.capacity())
            m_body.reserve(std::max(size, std::min(m_limits.bodySize + chunkSize, 2 * m_body.size())) + padding);
    }

    /// Ends the exchange without a body.
    void abandon(HttpReply::End end)
    {
        m_ignoresData = true;
        m_end = end;
        m_body = {};
        endNow();
    }

    /// After a decompression error, Qt either returns compressed bytes or waits forever.
    void endAfterDecompressionError()
    {
        m_ignoresData = true;
        QMetaObject::invokeMethod(
            this, [this] { endNow(); }, Qt::QueuedConnection);
    }

    /// Ends the exchange with the bytes received so far. Qt prints a warning if a reply that has failed is aborted.
    void endNow()
    {
        if (!m_finished)
            m_reply->error() == QNetworkReply::NoError ? m_reply->abort() : finish();
    }

    /// Qt reports ContentReSendError instead of success if the server closes the connection before Qt has noticed
    /// that the request is sent: it tries to send the request again, which OneShotBody prevents.
    bool isComplete(int status) const
    {
        using Error = QNetworkReply::NetworkError;
        const Error error = m_reply->error();
        if (m_end != HttpReply::End::Platform || status == 0)
            return false;
        if (error == Error::ContentReSendError)
            return !m_reply->hasRawHeader("Content-Length") && !m_reply->hasRawHeader("Transfer-Encoding");
        // From 400 on, a status is an error to Qt.
        return error == Error::NoError || (status >= 400 && error != Error::RemoteHostClosedError);
    }

    void finish()
    {
        if (std::exchange(m_finished, true))
            return;
        readAvailable();
        m_silenceTimer.stop();
        m_reply->disconnect(this);
        HttpReply reply;
        reply.body = std::move(m_body);
        reply.status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        reply.headers = m_reply->rawHeaderPairs();
        reply.error = m_reply->error();
        reply.end = m_end;
        reply.complete = isComplete(reply.status);
        deleteLater();
        m_handler(std::move(reply));
    }

    std::function<void(HttpReply)> m_handler;
    HttpLimits m_limits;
    QNetworkAccessManager *const m_manager = new QNetworkAccessManager(this);
    QTimer m_silenceTimer;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_body;
    bool m_ignoresData = false;
    bool m_finished = false;
    HttpReply::End m_end = HttpReply::End::Platform;
};

} // namespace

void sendHttp(const HttpRequest &request, std::function<void(HttpReply)> finished, const HttpLimits &limits,
              const HttpObserver &observer)
{
    new Exchange(request, std::move(finished), limits, observer);
}

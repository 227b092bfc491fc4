#include "HttpTransport.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace {

/// A body that can be read once. The platform sends a request again by itself when a connection dies, after it has
/// taken the body back to its start; a device that cannot go back is what keeps a POST from being sent twice.
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
    bool seek(qint64) override { return false; }

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

/// Where managers go whose exchange was given up. Their networking thread may still be reading what a server floods
/// it with, and the platform waits for it, for five seconds, when a manager goes.
QThread &departure()
{
    static auto *const thread = [] {
        auto *made = new QThread;
        made->setObjectName(QStringLiteral("departure"));
        made->start();
        qAddPostRoutine([] {
            departure().quit();
            departure().wait();
        });
        return made;
    }();
    return *thread;
}

/// One exchange with a manager of its own: exchanges that share one also share its connections and their faults.
class Exchange final : public QObject {
public:
    Exchange(const HttpRequest &request, std::function<void(HttpReply)> finished, const HttpLimits &limits,
             const HttpObserver &observer)
        : QObject(QCoreApplication::instance()), m_finished(std::move(finished)), m_limits(limits)
    {
        m_manager->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
        m_reply = send(request);
        // The platform hears of it only once the exchange has begun, which is a turn of the event loop later;
        // unheard, a server that sends chunks faster than they are read fills the memory.
        QMetaObject::invokeMethod(
            m_reply, [this] { m_reply->setReadBufferSize(readBuffer); }, Qt::QueuedConnection);
        if (observer)
            observer(*m_reply);

        m_silence.setSingleShot(true);
        // The platform's other timers may be early.
        m_silence.setTimerType(Qt::PreciseTimer);
        m_silence.callOnTimeout(this, [this] { giveUp(HttpReply::End::Silent); });
        m_silence.start(m_limits.silence);

        const auto moved = [this] { m_silence.start(); };
        connect(m_reply, &QNetworkReply::uploadProgress, this, moved);
        connect(m_reply, &QNetworkReply::downloadProgress, this, moved);
        connect(m_reply, &QNetworkReply::metaDataChanged, this, moved);
        connect(m_reply, &QNetworkReply::encrypted, this, moved);
        connect(m_reply, &QNetworkReply::readyRead, this, [this] { take(); });
        connect(m_reply, &QNetworkReply::finished, this, [this] { finish(); });
        connect(m_reply, &QNetworkReply::errorOccurred, this, [this](QNetworkReply::NetworkError error) {
            if (error == QNetworkReply::UnknownContentError)
                stopUnpacking();
        });
    }

    ~Exchange() override
    {
        // At the end of the app there is no thread left to go to.
        if (m_end == HttpReply::End::Platform || QCoreApplication::closingDown())
            return;
        delete m_reply;
        m_manager->setParent(nullptr);
        m_manager->moveToThread(&departure());
        m_manager->deleteLater();
    }

private:
    /// Room behind the body for readers that look a little beyond the end.
    static constexpr qint64 roomBehind = 64;
    static constexpr qint64 piece = qint64(16) * 1024;
    static constexpr qint64 readBuffer = qint64(256) * 1024;

    QNetworkReply *send(const HttpRequest &request)
    {
        QNetworkRequest platform(request.url);
        platform.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
        platform.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
        platform.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
        platform.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
        platform.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        platform.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        // The limit on the body's size below holds for what is decompressed; the platform's own threshold, a ratio,
        // would refuse honest replies with many like rows.
        platform.setDecompressedSafetyCheckThreshold(m_limits.bodySize);
        if (request.method == HttpRequest::Method::Get)
            return m_manager->get(platform);
        platform.setHeader(QNetworkRequest::ContentTypeHeader, request.contentType);
        platform.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
        return m_manager->post(platform, new OneShotBody(request.body, this));
    }

    void take()
    {
        m_silence.start();
        if (m_dropped)
            return;
        const qint64 announced = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (announced > m_limits.bodySize)
            return giveUp(HttpReply::End::TooLarge);
        makeRoom(announced);
        // Piece by piece: all at once, little that is packed may be very much.
        for (qint64 count = 1; count > 0;) {
            const qsizetype size = m_body.size();
            makeRoom(size + piece);
            m_body.resize(size + piece);
            count = m_reply->read(m_body.data() + size, piece);
            m_body.resize(size + std::max<qint64>(count, 0));
            if (m_body.size() > m_limits.bodySize)
                return giveUp(HttpReply::End::TooLarge);
        }
    }

    /// A body that grows by appending is copied now and then, and in memory twice while it is.
    void makeRoom(qint64 size)
    {
        if (size + roomBehind > m_body.capacity())
            m_body.reserve(std::max(size, std::min(m_limits.bodySize + piece, 2 * m_body.size())) + roomBehind);
    }

    /// Ends the exchange as one without a reply.
    void giveUp(HttpReply::End end)
    {
        m_dropped = true;
        m_end = end;
        m_body = {};
        conclude();
    }

    /// Behind bytes that it cannot unpack the platform hands out packed ones, or waits for ever.
    void stopUnpacking()
    {
        m_dropped = true;
        QMetaObject::invokeMethod(
            this, [this] { conclude(); }, Qt::QueuedConnection);
    }

    /// Ends the exchange with what has come. The platform complains when one that has failed is aborted.
    void conclude()
    {
        if (!m_finishing)
            m_reply->error() == QNetworkReply::NoError ? m_reply->abort() : finish();
    }

    void finish()
    {
        if (std::exchange(m_finishing, true))
            return;
        take();
        m_silence.stop();
        m_reply->disconnect(this);
        HttpReply reply;
        reply.body = std::move(m_body);
        reply.status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        reply.headers = m_reply->rawHeaderPairs();
        reply.error = m_reply->error();
        reply.end = m_end;
        deleteLater();
        m_finished(std::move(reply));
    }

    std::function<void(HttpReply)> m_finished;
    HttpLimits m_limits;
    QNetworkAccessManager *const m_manager = new QNetworkAccessManager(this);
    QTimer m_silence;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_body;
    bool m_dropped = false;
    bool m_finishing = false;
    HttpReply::End m_end = HttpReply::End::Platform;
};

} // namespace

void sendHttp(const HttpRequest &request, std::function<void(HttpReply)> finished, const HttpLimits &limits,
              const HttpObserver &observer)
{
    new Exchange(request, std::move(finished), limits, observer);
}

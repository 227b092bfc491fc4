#include "Service.h"

#include "Endpoints.h"
#include "Json.h"
#include "Password.h"
#include "Records.h"
#include "Store.h"

#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr auto address = "127.0.0.1";
constexpr auto jsonType = "application/json";
constexpr auto success = "success"_L1;
constexpr auto error = "error"_L1;
constexpr qsizetype mebibyte = qsizetype(1024) * 1024;
constexpr qsizetype largestBody = 32 * mebibyte;
/// The same for a profile, which may contain a photo.
constexpr qsizetype largestProfile = 192 * mebibyte;
constexpr qsizetype longestText = 10'000;
// In base64 three bytes of a photo take four characters, or eight bytes in JSON if each is a "\/". A character of the
// other three texts takes at most six bytes.
static_assert(largestProfile > (PerfilRequest::largestPhoto + 2) / 3 * 8 + longestText * 18 + 1000);
constexpr std::size_t threads = 8;

/// The listing of an unknown customer. The app ignores the message.
struct RefusedListing {
    QString status;
    QString message;
    QList<DashboardResponse::Paquete> paquetes;
    QList<DashboardResponse::Cotizacion> cotizaciones;
};
BOOST_DESCRIBE_STRUCT(RefusedListing, (), (status, message, paquetes, cotizaciones))

/// A request that violates the protocol: the HTTP status, and a message that says how.
struct Refused {
    int status;
    QString message;
};

void setBody(httplib::Response &to, std::string body)
{
    // The library would take half a minute to compress a listing with a large photo.
    constexpr std::size_t longestCompressed = std::size_t(1024) * 1024;
    if (body.size() <= longestCompressed)
        return to.set_content(body, jsonType);
    const std::size_t size = body.size();
    to.set_content_provider(size, jsonType,
                            [body = std::move(body)](std::size_t from, std::size_t length, httplib::DataSink &sink) {
                                return sink.write(body.data() + from, length);
                            });
}

template <Record R>
void reply(httplib::Response &to, const R &record, int status = 200)
{
    const QByteArray body = Json::write(record).value_or(QByteArray("{}"));
    to.status = status;
    setBody(to, body.toStdString());
}

void refuse(httplib::Response &to, const Refused &why)
{
    reply(to, StandardResponse{error, why.message}, why.status);
}

StandardResponse failed(const QString &message) { return {error, message}; }
StandardResponse done(const QString &message) { return {success, message}; }
StandardResponse unknownCustomer() { return failed(u"No encontramos a ese cliente"_s); }

std::string pathOf(const QString &endpoint) { return (u'/' + endpoint).toStdString(); }

bool equalIgnoringCase(std::string_view one, std::string_view other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

/// Returns whether a Host header names this machine, with or without a port. A web page whose host name resolves to
/// 127.0.0.1 (DNS rebinding) sends its own name.
bool isLoopbackHost(std::string_view host)
{
    const std::size_t end = host.starts_with('[') ? host.find(']') : host.find(':');
    std::string_view port;
    if (host.starts_with('[') && end != std::string_view::npos) {
        port = host.substr(end + 1);
        host = host.substr(0, end + 1);
    } else if (end != std::string_view::npos) {
        port = host.substr(end);
        host = host.substr(0, end);
    }
    const bool goodPort = port.empty() || (port.starts_with(':') && port.size() > 1 && port.size() <= 6 &&
                                           std::all_of(port.begin() + 1, port.end(),
                                                       [](unsigned char digit) { return std::isdigit(digit); }));
    return goodPort && (host == "127.0.0.1" || equalIgnoringCase(host, "localhost") || host == "[::1]");
}

/// Limits the length of every text except the photo.
template <Record R>
void checkLengths(const R &record)
{
    boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) {
        if constexpr (std::same_as<std::remove_cvref_t<decltype(record.*field.pointer)>, QString>) {
            const qsizetype length = (record.*field.pointer).size();
            if (length > longestText && std::string_view(field.name) != "avatar_base64")
                throw Refused{400, u"Solicitud no válida: %1: text of %2 characters, must be at most %3"_s
                                       .arg(QLatin1String(field.name))
                                       .arg(length)
                                       .arg(longestText)};
        }
    });
}

template <Record R>
R readRecord(QByteArray body)
{
    auto read = Json::readAndFree<R>(std::move(body));
    if (!read)
        throw Refused{400, u"Solicitud no válida: "_s + read.error};
    checkLengths(*read.record);
    return std::move(*read.record);
}

QByteArray readBody(const httplib::Request &request, const httplib::Response &response,
                    const httplib::ContentReader &content, qsizetype largest)
{
    constexpr int tooLarge = 413;
    const auto refusal = [&] {
        return Refused{tooLarge,
                       u"La solicitud es demasiado grande: el máximo es de %1 MiB"_s.arg(largest / mebibyte)};
    };
    if (!equalIgnoringCase(request.get_header_value("Content-Type"), jsonType))
        throw Refused{400, u"Solicitud no válida: Content-Type must be application/json"_s};
    // Without a length, the library would wait until the connection is closed.
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
        throw Refused{411, u"Solicitud no válida: Content-Length missing"_s};
    // The app never compresses a body, and a small compressed body can expand to any size.
    if (request.has_header("Content-Encoding"))
        throw Refused{415, u"Solicitud no válida: Content-Encoding must be absent"_s};
    const qint64 announced = QByteArray::fromStdString(request.get_header_value("Content-Length")).toLongLong();
    QByteArray body;
    body.reserve(std::clamp<qint64>(announced, 0, largest) + Json::readBeyond);
    qsizetype received = 0;
    const bool complete = content([&](const char *bytes, std::size_t count) {
        received += static_cast<qsizetype>(count);
        if (received <= largest)
            body.append(bytes, static_cast<qsizetype>(count));
        else
            body = {};
        // If the rest were not read, the connection would break before the client has read the refusal.
        return received <= largestProfile;
    });
    if (received > largest || response.status == tooLarge)
        throw refusal();
    if (!complete)
        throw Refused{400, u"Solicitud no válida: body incomplete"_s};
    return body;
}

std::optional<qint64> customerNumber(const QString &text)
{
    bool good = false;
    const qint64 id = text.toLongLong(&good);
    return good && text == QString::number(id) ? std::optional(id) : std::nullopt;
}

qint64 customerOf(const httplib::Request &request)
{
    // The library splits "user_id=2=1" differently from version to version, and takes the 1 in some.
    const QString target = QString::fromStdString(request.target);
    const QString prefix = Endpoints::paquetes.parameter + u'=';
    const QString query = target.mid(target.indexOf(u'?') + 1);
    if (target.contains(u'?') && query.startsWith(prefix)) {
        if (const auto id = customerNumber(query.mid(prefix.size())))
            return *id;
    }
    throw Refused{400, u"Solicitud no válida: user_id: the query must be user_id= and a whole number of 64 bits"_s};
}

bool looksLikeEmail(const QString &email)
{
    const QString trimmed = email.trimmed();
    const qsizetype at = trimmed.indexOf(u'@');
    return at > 0 && at < trimmed.size() - 1 && trimmed.indexOf(u'@', at + 1) < 0;
}

// The endpoints.

LoginResponse login(Store &store, const LoginRequest &request)
{
    const auto customer = store.customerByEmail(request.email);
    if (!isPassword(request.password, customer ? customer->passwordHash : QByteArray()))
        return {error, u"Correo o contraseña incorrectos"_s, std::nullopt, std::nullopt};
    return {success, u"Bienvenido"_s, QString::number(customer->id), customer->nombre};
}

StandardResponse recover(Store &store, const RecuperarRequest &request)
{
    store.addRecoveryRequest(request.email);
    return done(u"Si el correo está registrado, recibirás un enlace"_s);
}

LoginResponse registerCustomer(Store &store, const RegistroRequest &request)
{
    const auto failure = [](const QString &message) {
        return LoginResponse{error, message, std::nullopt, std::nullopt};
    };
    if (request.nombre.trimmed().isEmpty() || request.password.isEmpty())
        return failure(u"Completa tu nombre y tu contraseña"_s);
    if (!looksLikeEmail(request.email))
        return failure(u"Escribe un correo válido"_s);
    const auto id = store.addCustomer(request, hashPassword(request.password));
    if (!id)
        return failure(u"Ese correo ya está registrado"_s);
    return {success, u"Tu casillero está listo"_s, QString::number(*id), request.nombre};
}

StandardResponse saveProfile(Store &store, const PerfilRequest &request)
{
    Store::Profile profile{request.nombre, {}, {}, {}};
    if (!request.avatar_base64.isEmpty()) {
        const QByteArray text = request.avatar_base64.toUtf8();
        profile.avatar = QByteArray::fromBase64(text);
        // The decoder skips invalid characters; encode the result again to detect them.
        if (profile.avatar->toBase64() != text)
            throw Refused{400, u"Solicitud no válida: avatar_base64: text, must be base64"_s};
    }
    if (request.nombre.trimmed().isEmpty())
        return failed(u"Completa tu nombre"_s);
    if (!request.email.trimmed().isEmpty()) {
        if (!looksLikeEmail(request.email))
            return failed(u"Escribe un correo válido"_s);
        profile.email = request.email;
    }
    if (!request.password.isEmpty())
        profile.passwordHash = hashPassword(request.password);
    switch (store.saveProfile(request.user_id, profile)) {
    case Store::Saved::Yes:
        return done(u"Perfil actualizado"_s);
    case Store::Saved::EmailTaken:
        return failed(u"Ese correo ya está registrado"_s);
    case Store::Saved::NoSuchCustomer:
        break;
    }
    return unknownCustomer();
}

CasilleroResponse mailbox(Store &store, const CasilleroRequest &request)
{
    const auto id = customerNumber(request.user_id);
    const auto customer = id ? store.customerById(*id) : std::nullopt;
    if (!customer)
        return {error, std::nullopt, unknownCustomer().message};
    return {success, u"%1 MRV-%2"_s.arg(customer->nombre, QString::number(1000 + customer->id)), std::nullopt};
}

StandardResponse quote(Store &store, const CotizacionRequest &request)
{
    if (request.tipo != CotizacionRequest::aereo && request.tipo != CotizacionRequest::maritimo)
        return failed(u"Elige envío aéreo o marítimo"_s);
    if (request.peso < 0 || request.valor < 0)
        return failed(u"El peso y el valor no pueden ser negativos"_s);
    return store.addQuotation(request) ? done(u"Recibimos tu solicitud de cotización"_s) : unknownCustomer();
}

StandardResponse importVehicle(Store &store, const AutoRequest &request)
{
    return store.addVehicleRequest(request) ? done(u"Recibimos tu solicitud de importación"_s) : unknownCustomer();
}

QByteArray listing(Store &store, qint64 id)
{
    auto all = store.listing(id);
    if (!all)
        return Json::write(RefusedListing{error, unknownCustomer().message.value_or(QString()), {}, {}}).value();
    all->status = success;
    return Json::write(*all).value();
}

/// Returns the message for requests that the library itself refuses, such as those with an invalid head.
QString messageFor(int status)
{
    switch (status) {
    case 404:
        return u"No existe esa dirección"_s;
    case 413:
        return u"La solicitud es demasiado grande"_s;
    case 414:
        return u"La dirección es demasiado larga"_s;
    default:
        return u"Solicitud no válida"_s;
    }
}

} // namespace

/// Caches the replies with listings until the store changes.
class Listings {
public:
    std::string of(Store &store, qint64 customer)
    {
        const qint64 edition = store.edition();
        const std::scoped_lock lock(m_mutex);
        if (edition != m_edition || m_written.size() >= most)
            m_written.clear();
        m_edition = edition;
        auto found = m_written.find(customer);
        if (found == m_written.end()) {
            found = m_written.emplace(customer, listing(store, customer).toStdString()).first;
        }
        return found->second;
    }

private:
    static constexpr std::size_t most = 16;

    std::mutex m_mutex;
    qint64 m_edition = 0;
    std::map<qint64, std::string> m_written;
};

class Service::Implementation {
public:
    Implementation();

    httplib::Server server;
    quint16 port = 0;
    std::unique_ptr<Store> store;
    std::thread thread;

private:
    template <Record Request, Record Reply>
    void answer(const PostEndpoint<Request, Reply> &endpoint, Reply (*work)(Store &, const Request &),
                qsizetype largest = largestBody);
    template <class Work>
    void answerOrReport(httplib::Response &response, Work work);
    void refuseUnknownRequests();
    void answerEverythingElse();

    struct Endpoint {
        std::string path;
        std::string method;
    };
    std::vector<Endpoint> m_endpoints;
    Listings m_listings;
    std::mutex m_largeBodies;
};

Service::Implementation::Implementation()
{
    server.new_task_queue = [] { return new httplib::ThreadPool(threads); };
    server.set_payload_max_length(largestProfile);
    // One request per connection: the rest of a refused request must not be read as the next one.
    server.set_keep_alive_max_count(1);
    server.set_keep_alive_timeout(2);
    // The library's default, SO_REUSEPORT, would let two services share a port and get half of the requests each.
    server.set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });

    answer(Endpoints::login, login);
    answer(Endpoints::recuperar, recover);
    answer(Endpoints::registro, registerCustomer);
    answer(Endpoints::perfil, saveProfile, largestProfile);
    answer(Endpoints::casillero, mailbox);
    answer(Endpoints::cotizar, quote);
    answer(Endpoints::importarAuto, importVehicle);
    const std::string listing = pathOf(Endpoints::paquetes);
    m_endpoints.push_back({listing, "GET"});
    server.Get(listing, [this](const httplib::Request &request, httplib::Response &response) {
        answerOrReport(response, [&] { setBody(response, m_listings.of(*store, customerOf(request))); });
    });
    refuseUnknownRequests();
    answerEverythingElse();
}

template <Record Request, Record Reply>
void Service::Implementation::answer(const PostEndpoint<Request, Reply> &endpoint,
                                     Reply (*work)(Store &, const Request &), qsizetype largest)
{
    const std::string path = pathOf(endpoint);
    m_endpoints.push_back({path, "POST"});
    server.Post(path, [this, work, largest](const httplib::Request &request, httplib::Response &response,
                                            const httplib::ContentReader &content) {
        answerOrReport(response, [&] {
            QByteArray body = readBody(request, response, content, largest);
            std::unique_lock lock(m_largeBodies, std::defer_lock);
            // Reading a body takes several times its size in memory.
            if (body.size() > largestBody)
                lock.lock();
            reply(response, work(*store, readRecord<Request>(std::move(body))));
        });
    });
}

template <class Work>
void Service::Implementation::answerOrReport(httplib::Response &response, Work work)
{
    try {
        work();
    } catch (const Refused &why) {
        refuse(response, why);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "marovenda-demo-service: %s\n", failure.what());
        refuse(response, {500, u"El servicio tuvo un problema; intenta más tarde"_s});
    }
}

/// Checks the host, the path and the method before a body is read.
void Service::Implementation::refuseUnknownRequests()
{
    server.set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
        using httplib::Server;
        // Ignore Range headers: a reply is always a whole JSON document. The const_cast is safe, since the library
        // owns a non-const request.
        const_cast<httplib::Request &>(request).ranges.clear();
        if (request.get_header_value_count("Host") != 1 || !isLoopbackHost(request.get_header_value("Host"))) {
            refuse(response, {403, u"Este servicio solo responde a esta misma máquina"_s});
            return Server::HandlerResponse::Handled;
        }
        const auto endpoint = std::find_if(m_endpoints.begin(), m_endpoints.end(),
                                           [&](const Endpoint &one) { return one.path == request.path; });
        if (endpoint == m_endpoints.end()) {
            refuse(response, {404, messageFor(404)});
            return Server::HandlerResponse::Handled;
        }
        if (endpoint->method != request.method) {
            refuse(response, {405, u"Esa dirección solo admite "_s + QString::fromStdString(endpoint->method)});
            response.set_header("Allow", endpoint->method);
            return Server::HandlerResponse::Handled;
        }
        return Server::HandlerResponse::Unhandled;
    });
}

void Service::Implementation::answerEverythingElse()
{
    server.set_error_handler([](const httplib::Request &, httplib::Response &response) {
        if (response.body.empty())
            refuse(response, {response.status, messageFor(response.status)});
    });
}

Service::Service() : m_implementation(std::make_unique<Implementation>()) {}

Service::~Service() { stop(); }

bool Service::bind(quint16 port)
{
    auto &server = m_implementation->server;
    const int bound = port == 0 ? server.bind_to_any_port(address) : (server.bind_to_port(address, port) ? port : -1);
    m_implementation->port = bound > 0 ? static_cast<quint16>(bound) : 0;
    return bound > 0;
}

quint16 Service::port() const { return m_implementation->port; }

void Service::start(std::unique_ptr<Store> store)
{
    m_implementation->store = std::move(store);
    m_implementation->thread = std::thread([this] { m_implementation->server.listen_after_bind(); });
    // A stop() before the server runs would have no effect.
    while (!m_implementation->server.is_running())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void Service::stop()
{
    if (!m_implementation->thread.joinable())
        return;
    m_implementation->server.stop();
    m_implementation->thread.join();
}

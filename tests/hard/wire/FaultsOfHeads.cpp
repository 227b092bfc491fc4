#include "Faults.h"

namespace Faults {

namespace {

Fault sending(const QByteArray &name, Gets gets, const std::function<QByteArray(const QByteArray &)> &bytes)
{
    return {name, [bytes](const QByteArray &body) { return Steps().send(bytes(body)).close(); }, gets};
}

Fault answering(const QByteArray &status, const QByteArrayList &lines, Gets gets)
{
    Fault fault{status + " with a body",
                [=](const QByteArray &body) { return Steps().send(whole(body, status, lines)).close(); }, gets};
    fault.row = status.first(1) + "xx with a body";
    return fault;
}

Fault empty(const QByteArray &status, const QByteArrayList &lines = {})
{
    Fault fault{status + " without a body",
                [=](const QByteArray &) { return Steps().send(whole({}, status, lines)).close(); }};
    fault.row = status.first(1) + "xx without a body";
    return fault;
}

} // namespace

QList<Fault> heads()
{
    const auto before = [](const QByteArray &start) {
        return [start](const QByteArray &body) { return start + whole(body); };
    };
    const auto with = [](const QByteArray &line) {
        return [line](const QByteArray &body) { return whole(body, "200 OK", {line}); };
    };
    const auto only = [](const QByteArray &bytes) { return [bytes](const QByteArray &) { return bytes; }; };
    return {
        sending("garbage", Gets::Absent, only("\x16\x03\x01 what is this\r\n\r\nnot HTTP\r\n")),
        sending("garbage without a line end", Gets::Absent, only("garbage")),
        sending("another protocol", Gets::Absent, only("SSH-2.0-OpenSSH\r\n")),
        sending("empty lines", Gets::Absent, only("\r\n\r\n\r\n")),
        sending("zero bytes", Gets::Absent, only(QByteArray(5000, '\0'))),
        sending("a body without a head", Gets::Absent, [](const QByteArray &body) { return body; }),
        sending("HTTP/9.9", Gets::Either,
                [](const QByteArray &body) { return QByteArray(whole(body)).replace("HTTP/1.1", "HTTP/9.9"); }),
        sending("a header of 100 kB", Gets::Record, with("X-Long: " + QByteArray(100000, 'x'))),
        sending("a thousand headers", Gets::Record, with(QByteArray("X-More: x\r\n").repeated(1000).chopped(2))),
        sending("a header without a colon", Gets::Record, with("no colon here")),
        sending("a header with a zero byte", Gets::Record, with(QByteArray("X-Zero: a\0b", 11))),
        sending("a folded header", Gets::Record, with("X-Folded: a\r\n b")),
        sending("headers that ask for another protocol", Gets::Record,
                with("Upgrade: h2c\r\nConnection: Upgrade\r\nAlt-Svc: h2=\":1\"")),
        sending("a header that refreshes", Gets::Record, with("Refresh: 0; url=/api_login.php")),
        sending("100 Continue before the reply", Gets::Record, before(head("100 Continue"))),
        sending("102 Processing before the reply", Gets::Either, before(head("102 Processing"))),
        sending("103 Early Hints before the reply", Gets::Either, before(head("103 Early Hints", {"Link: </a>"}))),
        sending("many 100 Continue before the reply", Gets::Record, before(head("100 Continue").repeated(50))),
        sending("100 Continue and no reply", Gets::Absent, only(head("100 Continue"))),
        sending("101 Switching Protocols", Gets::Absent, only(head("101 Switching Protocols", {"Upgrade: h2c"}))),
    };
}

QList<Fault> statuses()
{
    QList<Fault> all;
    // These two have no body by their definition, whatever follows.
    for (const char *status : {"204 No Content", "304 Not Modified"})
        all += {answering(status, {}, Gets::Absent), empty(status)};
    for (const char *status : {"200 OK",
                               "201 Created",
                               "202 Accepted",
                               "203 Other",
                               "205 Reset Content",
                               "206 Partial Content",
                               "226 IM Used",
                               "400 Bad Request",
                               "402 Payment Required",
                               "403 Forbidden",
                               "404 Not Found",
                               "405 Method Not Allowed",
                               "408 Request Timeout",
                               "409 Conflict",
                               "410 Gone",
                               "411 Length Required",
                               "412 Precondition Failed",
                               "413 Too Large",
                               "414 URI Too Long",
                               "415 Unsupported",
                               "417 Expectation Failed",
                               "418 Teapot",
                               "421 Misdirected",
                               "422 Unprocessable",
                               "425 Too Early",
                               "426 Upgrade Required",
                               "428 Precondition Required",
                               "429 Too Many Requests",
                               "431 Headers Too Large",
                               "451 Unavailable",
                               "500 Internal Server Error",
                               "501 Not Implemented",
                               "502 Bad Gateway",
                               "503 Service Unavailable",
                               "504 Gateway Timeout",
                               "505 Version",
                               "511 Network Authentication Required",
                               "599 Strange",
                               "600 Beyond",
                               "999 Nonsense"}) {
        const QByteArrayList lines =
            QByteArray(status).startsWith("503") ? QByteArrayList{"Retry-After: 0"} : QByteArrayList{};
        all += {answering(status, lines, Gets::Record), empty(status, lines)};
    }
    for (const char *scheme :
         {R"(Basic realm="a")", R"(Digest realm="a", nonce="b", qop="auth")", "NTLM", "Negotiate", "Bearer"}) {
        const QByteArray challenge = QByteArray("-Authenticate: ") + scheme;
        all +=
            {answering(QByteArray("401 ") + QByteArray(scheme).split(' ').first(), {"WWW" + challenge}, Gets::Record),
             answering(QByteArray("407 ") + QByteArray(scheme).split(' ').first(), {"Proxy" + challenge},
                       Gets::Record)};
    }
    return all;
}

QList<Fault> redirects(int port, int elsewhere)
{
    const QByteArray here = "http://127.0.0.1:" + QByteArray::number(port);
    const QByteArray there = "http://127.0.0.1:" + QByteArray::number(elsewhere);
    QList<Fault> all;
    for (const char *status : {"300", "301", "302", "303", "305", "307", "308", "399"}) {
        for (const auto &[where, target] :
             QList<std::pair<QByteArray, QByteArray>>{{"to the same address", "/api_login.php"},
                                                      {"to another path", here + "/other"},
                                                      {"to another host", there + "/api_login.php"},
                                                      {"to another host, encrypted", "https" + there.mid(4) + "/"},
                                                      {"to a file", "file:///etc/passwd"},
                                                      {"to data", "data:application/json,{}"},
                                                      {"to nowhere", "::::"},
                                                      {"without a place", {}}}) {
            const QByteArrayList lines = target.isEmpty() ? QByteArrayList{} : QByteArrayList{"Location: " + target};
            for (Fault fault : {answering(status + QByteArray(" Moved"), lines, Gets::Record),
                                empty(status + QByteArray(" Moved"), lines)}) {
                fault.row = "3xx " + where + fault.name.sliced(9);
                fault.name.insert(3, " " + where);
                all += fault;
            }
        }
    }
    return all;
}

} // namespace Faults

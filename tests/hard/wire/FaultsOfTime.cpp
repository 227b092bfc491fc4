#include "Exchanges.h"
#include "Faults.h"

namespace Faults {

QList<Fault> endings(const QByteArray &body, int first, int step)
{
    struct Reply {
        QByteArray name;
        QByteArray bytes;
        /// How many of them hold the whole body.
        qsizetype full;
    };
    const QByteArray toTheEnd = head("200 OK") + body;
    const QByteArray announced = whole(body);
    const QByteArray chunked = inChunks(body);
    const QByteArray packed = whole(Exchanges::gzip(body), "200 OK", {"Content-Encoding: gzip"});
    // Between the digits of a chunk's size and the end of its line the platform does not notice that a connection has
    // ended; the silences have that one.
    const qsizetype firstDigit = chunked.indexOf("\r\n\r\n") + 4;
    const qsizetype sizeEnd = chunked.indexOf('\n', firstDigit);
    QList<Fault> all;
    for (const auto &[name, bytes, full] :
         {Reply{"", announced, announced.size()}, Reply{" of a reply without a length", toTheEnd, toTheEnd.size()},
          Reply{" of a reply in chunks", chunked, chunked.lastIndexOf('}') + 1},
          // Behind the last letter: the end of its block, in one byte or two, and the sum.
          Reply{" of a packed reply", packed, packed.size() - 9}}) {
        for (qsizetype n = first; n <= bytes.size(); n += step) {
            if (bytes == chunked && n > firstDigit + 1 && n <= sizeEnd)
                continue;
            const auto ending = [&](const char *how, Gets gets, const auto &end) {
                Fault fault{how + QByteArray::number(n) + " bytes" + name,
                            [sent = bytes.first(n), end](const QByteArray &) { return end(Steps().send(sent)); },
                            gets};
                fault.row = QByteArray(how) + "n bytes" + name;
                fault.body = body;
                all += fault;
            };
            // Behind the body's last byte the platform may still miss the reply's, or find a reset instead.
            const bool sure = n == bytes.size() && bytes.size() == full;
            const Gets closed = n < full ? Gets::Absent : sure ? Gets::Record : Gets::Either;
            ending("closed after ", closed, [](Steps steps) { return steps.close(); });
            ending("reset after ", n < full ? Gets::Absent : Gets::Either, [](Steps steps) { return steps.reset(); });
        }
    }
    return all;
}

QList<Fault> silences()
{
    const auto after = [](const QByteArray &name, const QByteArray &bytes) {
        return Fault{"silent " + name, [bytes](const QByteArray &) { return Steps().send(bytes).silent(); }};
    };
    const QByteArray chunked = head("200 OK", {"Transfer-Encoding: chunked"});
    const auto silent = [](const QByteArray &) { return Steps().silent(); };
    return {
        {"silent from the start, reading nothing", silent, Gets::Absent, When::Door, Posts::None},
        {"silent after the request's head", silent, Gets::Absent, When::Head},
        {"silent in the middle of an upload", [](const QByteArray &) { return Steps().take(1 << 20).silent(); },
         Gets::Absent, When::Head, Posts::One, false, 20 << 20},
        after("without an answer", {}),
        after("in the status line", "HTTP/1.1 2"),
        after("in the head", "HTTP/1.1 200 OK\r\nContent-Le"),
        after("after the head", head("200 OK", {"Content-Length: 100"})),
        after("in the body", head("200 OK", {"Content-Length: 100"}) + R"({"status":)"),
        after("in a chunk", head("200 OK", {"Transfer-Encoding: chunked"}) + "5\r\n{}"),
        after("before the last chunk", head("200 OK", {"Transfer-Encoding: chunked"}) + "2\r\n{}\r\n"),
        after("after a whole record that lacks a byte of its length", head("200 OK", {"Content-Length: 3"}) + "{}"),
        after("after a record without a length", head("200 OK") + "{}"),
        after("in packed bytes", head("200 OK", {"Content-Encoding: gzip"}) + "\x1F\x8B"),
        after("after 100 Continue", head("100 Continue")),
        // The platform does not notice such an end.
        {"closed in a chunk's size",
         [chunked](const QByteArray &body) { return Steps().send(chunked + body).close(); }, Gets::Either},
    };
}

QList<Fault> endlessHeads(int bytes)
{
    const auto flooding = [bytes](const QByteArray &start, const QByteArray &piece) {
        return [=](const QByteArray &) {
            return Steps().send(start).flood(piece, bytes / int(piece.size()) - (bytes < 0)).silent();
        };
    };
    const QByteArray chunked = head("200 OK", {"Transfer-Encoding: chunked"});
    return {
        {"endless status line", flooding("HTTP/1.1 200 ", "OK OK OK ")},
        {"endless header", flooding("HTTP/1.1 200 OK\r\nX-Long: ", "xxxxxxxx")},
        {"endless headers", flooding("HTTP/1.1 200 OK\r\n", "X-More: xxxxxxxxxxxxxxxxxxxxx\r\n")},
        {"endless empty lines", flooding("", "\r\n")},
        {"endless 100 Continue", flooding("", head("100 Continue"))},
        {"endless chunk size", flooding(chunked, "00000000")},
        {"endless chunk extension", flooding(chunked + "5;x=", "xxxxxxxx")},
    };
}

} // namespace Faults

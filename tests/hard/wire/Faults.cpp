#include "Faults.h"

#include "Exchanges.h"

namespace Faults {

namespace {

constexpr int megabyte = 1 << 20;

/// A fault that sends bytes made from the good body, and then closes.
Fault closing(const QByteArray &name, Gets gets, const std::function<QByteArray(const QByteArray &)> &bytes)
{
    return {name, [bytes](const QByteArray &body) { return Steps().send(bytes(body)).close(); }, gets};
}

/// The same, leaving the connection open: the client has to know the end by itself.
Fault open(const QByteArray &name, Gets gets, const std::function<QByteArray(const QByteArray &)> &bytes)
{
    return {name, [bytes](const QByteArray &body) { return Steps().send(bytes(body)); }, gets};
}

Fault forgettable(Fault fault)
{
    fault.isForgettable = true;
    return fault;
}

Steps onlyClosing(const QByteArray &) { return Steps().close(); }
Steps onlyResetting(const QByteArray &) { return Steps().reset(); }

} // namespace

QByteArray head(const QByteArray &status, const QByteArrayList &lines)
{
    return QByteArray("HTTP/1.1 ") + status + "\r\n" + (lines.isEmpty() ? "" : lines.join("\r\n") + "\r\n") + "\r\n";
}

QByteArray whole(const QByteArray &body, const QByteArray &status, QByteArrayList lines)
{
    lines.append("Content-Length: " + QByteArray::number(body.size()));
    return head(status, lines) + body;
}

QByteArray inChunks(const QByteArray &body, qsizetype size)
{
    return head("200 OK", {"Transfer-Encoding: chunked"}) + Exchanges::chunked(body, size);
}

QList<Fault> connections()
{
    return {
        {"connection refused", onlyClosing, Gets::Absent, When::Request, Posts::None, true},
        {"closed before anything is read", onlyClosing, Gets::Absent, When::Door, Posts::None},
        forgettable({"reset before anything is read", onlyResetting, Gets::Absent, When::Door, Posts::None}),
        {"closed at once by a server that still reads", [](const QByteArray &) { return Steps().half(); },
         Gets::Absent, When::Door, Posts::AtMostOne},
        {"closed in the middle of the request's head", [](const QByteArray &) { return Steps().take(60).close(); },
         Gets::Absent, When::Door},
        {"reset in the middle of the request's head", [](const QByteArray &) { return Steps().take(60).reset(); },
         Gets::Absent, When::Door},
        {"closed without an answer", onlyClosing},
        {"reset without an answer", onlyResetting},
        {"closed in the middle of an upload", [](const QByteArray &) { return Steps().take(megabyte).close(); },
         Gets::Absent, When::Head, Posts::One, false, 20 * megabyte},
        {"reset in the middle of an upload", [](const QByteArray &) { return Steps().take(megabyte).reset(); },
         Gets::Absent, When::Head, Posts::One, false, 20 * megabyte},
        {"answered in the middle of an upload",
         [](const QByteArray &body) { return Steps().send(whole(body, "413 Too large")); }, Gets::Record, When::Head,
         Posts::One, false, 20 * megabyte},
        {"a byte at a time", [](const QByteArray &body) { return Steps().trickle(whole(body)); }, Gets::Record},
        {"a byte at a time, in chunks", [](const QByteArray &body) { return Steps().trickle(inChunks(body)); },
         Gets::Record},
        {"another reply behind the reply",
         [](const QByteArray &body) { return Steps().send(whole(body) + whole("{\"status\":\"second\"}")); },
         Gets::Record},
        {"reset after the whole reply was read",
         [](const QByteArray &body) { return Steps().send(whole(body)).take(1).reset(); }, Gets::Record},
    };
}

QList<Fault> lengths()
{
    const auto announced = [](const QByteArray &lines) {
        return [lines](const QByteArray &body) { return head("200 OK", {lines}) + body; };
    };
    const auto beside = [](int more) {
        return [more](const QByteArray &body) {
            return head("200 OK", {"Content-Length: " + QByteArray::number(body.size() + more)}) + body;
        };
    };
    const auto twice = [](int first, int second) {
        return [first, second](const QByteArray &body) {
            return head("200 OK", {"Content-Length: " + QByteArray::number(body.size() + first),
                                   "Content-Length: " + QByteArray::number(body.size() + second)}) +
                   body;
        };
    };
    return {
        open("length one byte short", Gets::Absent, beside(-1)),
        closing("length too long, then closed", Gets::Record, beside(10)),
        open("length 0 before a body", Gets::Absent, announced("Content-Length: 0")),
        closing("length negative", Gets::Record, announced("Content-Length: -5")),
        closing("length not a number", Gets::Record, announced("Content-Length: many")),
        closing("length empty", Gets::Record, announced("Content-Length:")),
        closing("length beyond 64 bits", Gets::Record, announced("Content-Length: 99999999999999999999999")),
        closing("length of many gigabytes", Gets::Absent, announced("Content-Length: 99999999999")),
        closing("no length", Gets::Record, [](const QByteArray &body) { return head("200 OK") + body; }),
        closing("two equal lengths", Gets::Record, twice(0, 0)),
        closing("two lengths, the first too long", Gets::Record, twice(9, 0)),
        closing("two lengths, the second too long", Gets::Record, twice(0, 9)),
        closing("length and chunks", Gets::Record,
                [](const QByteArray &body) {
                    return head("200 OK", {"Content-Length: 3", "Transfer-Encoding: chunked"}) +
                           Exchanges::chunked(body, 9);
                }),
        closing("length of a body in HTTP/1.0", Gets::Record,
                [](const QByteArray &body) { return "HTTP/1.0 200 OK\r\n\r\n" + body; }),
    };
}

QList<Fault> chunks()
{
    const auto chunk = [](const QByteArray &size, const QByteArray &after = "\r\n0\r\n\r\n") {
        return [size, after](const QByteArray &body) {
            return head("200 OK", {"Transfer-Encoding: chunked"}) +
                   (size.isEmpty() ? QByteArray::number(body.size(), 16) : size) + "\r\n" + body + after;
        };
    };
    return {
        open("good chunks", Gets::Record, [](const QByteArray &body) { return inChunks(body, 7); }),
        open("chunks of one byte", Gets::Record, [](const QByteArray &body) { return inChunks(body, 1); }),
        closing("chunk size not a number", Gets::Absent, chunk("zz")),
        closing("chunk size negative", Gets::Absent, chunk("-5")),
        closing("chunk size empty", Gets::Absent, chunk(" ")),
        closing("chunk size beyond 64 bits", Gets::Absent, chunk("fffffffffffffffffffff")),
        closing("chunk size 2^63", Gets::Absent, chunk("8000000000000000")),
        closing("chunk larger than what comes", Gets::Record, chunk("ffff", "")),
        closing("chunk smaller than what comes", Gets::Absent, chunk("5")),
        closing("chunk without a line end", Gets::Record, chunk({}, "")),
        closing("no last chunk", Gets::Record, chunk({}, "\r\n")),
        closing("chunk with an extension", Gets::Record,
                [chunk](const QByteArray &body) {
                    return chunk(QByteArray::number(body.size(), 16) + ";name=\"value\"")(body);
                }),
        open("chunks with a trailer", Gets::Record, chunk({}, "\r\n0\r\nX-Trailer: yes\r\n\r\n")),
        closing("unknown transfer coding", Gets::Record,
                [](const QByteArray &body) { return head("200 OK", {"Transfer-Encoding: strange"}) + body; }),
    };
}

QList<Fault> packings()
{
    const auto packed = [](const QByteArray &coding, const std::function<QByteArray(QByteArray)> &spoil) {
        return [coding, spoil](const QByteArray &body) {
            return whole(spoil(Exchanges::gzip(body)), "200 OK", {"Content-Encoding: " + coding});
        };
    };
    const auto flipped = [](qsizetype at) {
        return [at](QByteArray bytes) {
            bytes[at < 0 ? bytes.size() + at : at] = static_cast<char>(~bytes[at < 0 ? bytes.size() + at : at]);
            return bytes;
        };
    };
    return {
        open("good gzip", Gets::Record, packed("gzip", [](const QByteArray &bytes) { return bytes; })),
        closing("gzip that is none", Gets::Absent,
                [](const QByteArray &body) { return whole(body, "200 OK", {"Content-Encoding: gzip"}); }),
        closing("gzip with a wrong mark", Gets::Absent, packed("gzip", flipped(0))),
        closing("gzip damaged in the middle", Gets::Absent, packed("gzip", flipped(30))),
        closing("gzip with a wrong checksum", Gets::Absent, packed("gzip", flipped(-8))),
        closing("gzip cut in half", Gets::Absent,
                packed("gzip", [](const QByteArray &bytes) { return bytes.first(bytes.size() / 2); })),
        closing("gzip in gzip", Gets::Absent,
                packed("gzip", [](const QByteArray &bytes) { return Exchanges::gzip(bytes); })),
        closing("gzip said to be deflate", Gets::Absent,
                packed("deflate", [](const QByteArray &bytes) { return bytes.mid(3); })),
        closing("gzip not announced", Gets::Absent,
                packed("identity", [](const QByteArray &bytes) { return bytes; })),
        closing("unknown content coding", Gets::Record,
                [](const QByteArray &body) { return whole(body, "200 OK", {"Content-Encoding: strange"}); }),
        {"gzip bomb of 300 MB",
         [](const QByteArray &) {
             return Steps().send(head("200 OK", {"Content-Encoding: gzip"})).bomb(R"({"status":")", 300).close();
         }},
        {"63 MB in gzip that are no record",
         [](const QByteArray &) {
             return Steps().send(head("200 OK", {"Content-Encoding: gzip"})).bomb(R"({"status":")", 63).close();
         }},
    };
}

QList<Fault> sizes()
{
    const QByteArray block(megabyte, 'b');
    const QByteArray chunk = QByteArray::number(megabyte, 16) + "\r\n" + block + "\r\n";
    const auto flooding = [](const QByteArray &start, const QByteArray &piece, int times = -1) {
        return [=](const QByteArray &) { return Steps().send(start).flood(piece, times).close(); };
    };
    const QByteArray chunked = head("200 OK", {"Transfer-Encoding: chunked"});
    return {
        {"100 MB, announced", flooding(head("200 OK", {"Content-Length: 104857600"}), block, 100)},
        {"100 MB, to the end of the connection", flooding(head("200 OK"), block, 100)},
        {"100 MB in chunks", flooding(chunked, chunk, 100)},
        {"60 MB that are no record", flooding(head("200 OK", {"Content-Length: 62914560"}), block, 60)},
        {"endless body", flooding(head("200 OK"), block)},
        {"endless body of an error", flooding(head("500 Error"), block)},
        {"endless chunks", flooding(chunked, chunk)},
        {"endless trailer", flooding(chunked + "0\r\n", "X-More: x\r\n")},
        {"65,536 chunks of one byte", flooding(chunked, QByteArray("1\r\nb\r\n").repeated(65536), 1)},
    };
}

} // namespace Faults

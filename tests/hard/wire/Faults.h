#pragma once

#include "Wire.h"

#include <QByteArray>
#include <QList>

#include <functional>

/// What a server, or what stands between it and the client, can do wrong, and what has to come of it.
namespace Faults {

/// What the completion gets: the record that the bytes of the reply's body make, or nothing.
enum class Gets {
    Record,
    Absent,
    /// One of the two: the platform decides, and its versions differ.
    Either,
};

/// How many POSTs of one call the server sees.
enum class Posts {
    One,
    AtMostOne,
    /// Nobody listens or reads.
    None,
};

struct Fault {
    QByteArray name;
    /// What the server does for a call whose good reply has this body.
    std::function<Steps(const QByteArray &body)> steps;
    Gets gets = Gets::Absent;
    When when = When::Request;
    Posts posts = Posts::One;
    /// Nobody listens at all.
    bool refused = false;
    /// Bytes of text in the request; a server reads a large one in pieces.
    int requestSize = 0;
    /// Where many stand together in the table; the name where empty.
    QByteArray row = {};
    /// The good reply's body, where it is not another one for each try.
    QByteArray body = {};
    /// The platform may note a GET to be sent again while it still writes it, and then forget it (Qt 6.4, where the
    /// first write fails): only the limit on silence ends that one.
    bool isForgettable = false;

    bool isLarge() const { return requestSize > 0; }
};

/// A head with its last empty line, from a status ("200 OK") and further lines.
QByteArray head(const QByteArray &status, const QByteArrayList &lines = {});
/// The whole of a good reply that announces its length.
QByteArray whole(const QByteArray &body, const QByteArray &status = "200 OK", QByteArrayList lines = {});
/// The same in chunks.
QByteArray inChunks(const QByteArray &body, qsizetype size = 16);

// The faults by what they concern. The second port is where redirects lead.
QList<Fault> connections();
QList<Fault> lengths();
QList<Fault> chunks();
QList<Fault> packings();
QList<Fault> sizes();
QList<Fault> heads();
QList<Fault> statuses();
QList<Fault> redirects(int port, int elsewhere);

/// A good reply that ends after each number of its bytes from `first` on, every `step` bytes.
QList<Fault> endings(const QByteArray &body, int first, int step);

/// Servers that fall silent at some point: only the limit on silence ends these.
QList<Fault> silences();

/// Bytes that are no body and no progress, which the limit on silence ends too: so many, then silence, or without end
/// where the number is negative. As long as they come the platform cannot let go of the connection, and its thread
/// reads on.
QList<Fault> endlessHeads(int bytes);

} // namespace Faults

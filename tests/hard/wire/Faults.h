#pragma once

#include "Wire.h"

#include <QByteArray>
#include <QList>

#include <functional>

/// What a server, or what stands between it and the client, can do wrong, and what has to come of it.
namespace Faults {

/// What the completion gets: the record that the bytes of the reply's body make, or nothing.
enum class Gets { Record, Absent };

/// How many POSTs of one call the server sees.
enum class Posts {
    One,
    /// None where nobody listens or reads.
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

/// Servers that fall silent at some point: only the limit on silence ends these.
QList<Fault> silences();

} // namespace Faults

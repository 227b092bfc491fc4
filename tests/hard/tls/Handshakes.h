#pragma once

#include "Calls.h"
#include "Tally.h"
#include "Wire.h"

/// Puts calls through handshakes of every kind: over those that must not be trusted not one byte of a request goes.
class Handshakes {
public:
    Handshakes(Tally &tally, Wire &wire) : m_tally(tally), m_wire(wire) {}

    /// Servers with certificates, versions and ciphers, and with none: on every call, or on one POST and the GET.
    void tryCertificates(bool everyCall);
    /// A good server that is cut off, or one of whose bytes is changed on the way, after every `step` bytes.
    void tryBrokenOff(int step);
    /// A good server that falls silent during the handshake: with the limit that customers get, and with a shorter
    /// one.
    void tryStalled();
    void tryStalledShortly();

private:
    struct Server {
        QByteArray name;
        /// Nothing where it speaks without encryption.
        QJsonObject tls = {};
        /// What it does before anything else, where it is more than a handshake.
        Steps door = {};
        bool isGood = false;
    };
    static QList<Server> servers();

    void prepare(const Server &server);
    void attempt(const Server &server, const Calls::Call &call, const Calls::Call &next);
    /// What is wrong with what the server got, or nothing. Over connections to be refused that is nothing at all,
    /// or, where it cannot decrypt, less than a request.
    QByteArray refused();
    QByteArray works(const Calls::Call &call);

    Tally &m_tally;
    Wire &m_wire;
};

#pragma once

#include <QtGlobal>

#include <memory>

class Store;

/// Answers the app's requests over HTTP, on the loopback interface only.
class Service {
public:
    Service();
    /// Stops first.
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Takes a port of 127.0.0.1, any free one for 0; false when it is taken or not allowed. Nobody is answered yet.
    bool bind(quint16 port);

    /// The port that was taken.
    quint16 port() const;

    /// Answers from now on, on threads of its own (a fixed number), out of `store`. Call once, after bind().
    void start(std::unique_ptr<Store> store);

    /// Ends after the requests under way are answered. May be called from any one thread, and twice.
    void stop();

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

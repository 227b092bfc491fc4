#pragma once

#include <QtGlobal>

#include <memory>

class Store;

/// Answers the app's requests over HTTP, on the loopback interface only.
class Service {
public:
    Service();
    /// Calls stop().
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Binds a port of 127.0.0.1; 0 means any free port. Returns false if the port is in use or not allowed. Requests
    /// are not answered before start().
    bool bind(quint16 port);

    /// Returns the port that bind() has bound.
    quint16 port() const;

    /// Starts to answer requests from `store`, on a fixed number of threads. Call it once, after bind().
    void start(std::unique_ptr<Store> store);

    /// Finishes the current requests and stops. May be called more than once, but not from two threads at a time.
    void stop();

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

#pragma once

#include <QByteArray>
#include <QElapsedTimer>

#include <array>
#include <functional>
#include <memory>
#include <optional>

/// Every exchange that the client has, each as one call that notes what its completion gets.
namespace Calls {

/// What came of one call.
struct Delivery {
    int completions = 0;
    /// A completion inside the call, or on another thread.
    bool misplaced = false;
    /// The record as compact JSON; nothing when it was absent.
    std::optional<QByteArray> record = {};
    /// Milliseconds from the call to its completion.
    qint64 took = 0;
    QElapsedTimer since = {};
    bool returned = false;
};
using DeliveryPtr = std::shared_ptr<Delivery>;

struct Call {
    QByteArray name;
    /// As the server sees it, without the query.
    QByteArray path;
    /// "POST /api_login.php", "GET /api_paquetes.php?user_id=7"
    QByteArray firstLine;
    /// A reply that reads as the record, written as the client would write it, with a text in it.
    std::function<QByteArray(const QByteArray &text)> reply;
    /// Calls the product's client; the request holds `text`.
    std::function<void(const QByteArray &text, const DeliveryPtr &delivery)> make;

    bool isPost() const { return firstLine.startsWith("POST"); }
    DeliveryPtr start(const QByteArray &text) const;
};

constexpr std::size_t count = 8;
/// Seven POSTs, then the GET.
const std::array<Call, count> &all();

} // namespace Calls

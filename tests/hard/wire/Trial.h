#pragma once

#include "Calls.h"
#include "Faults.h"
#include "Tally.h"

/// Puts one call through one fault, among others that have to come through.
class Trial {
public:
    /// The rows of the table begin with `row`.
    Trial(Tally &tally, Wire &wire, QByteArray row = {}) : m_tally(tally), m_wire(wire), m_row(std::move(row)) {}

    /// Before it a call to another endpoint is made and held by the server; it is answered afterwards, and one more
    /// call is made then. Notes one try of the fault.
    void run(const Faults::Fault &fault, std::size_t call);

    /// Notes, at the very end, that no call was completed a second time.
    void finish();

private:
    /// What was wrong, or nothing.
    QByteArray attempt(const Faults::Fault &fault, const Calls::Call &call, const Calls::Call &held,
                       const Calls::Call &next);
    QByteArray judge(const Faults::Fault &fault, const Calls::Call &call, const QByteArray &expected,
                     const Calls::Delivery &delivery);
    QByteArray counted(const Faults::Fault &fault, const Calls::Call &call);
    Calls::DeliveryPtr start(const Calls::Call &call, const QByteArray &text);

    Tally &m_tally;
    Wire &m_wire;
    QByteArray m_row;
    QList<Calls::DeliveryPtr> m_all;
    int m_number = 0;
};

/// How much memory an exchange may take, in MiB: with what else the client needs that is less than 200.
constexpr double memoryLimit = 150;
/// The most memory that this process has held since `forgetPeak` beyond what it held then, in MiB. What a sanitizer
/// keeps of exchanges of before does not count.
double peakMemory();
void forgetPeak();

#pragma once

#include "Asker.h"

namespace Check {

/// One visit to a server: signs in with the test customer as the app would, asks what the screens ask, and notes what
/// the app would make of each reply.
class Visit {
public:
    /// `progress` is told each endpoint before it is asked.
    Visit(Order order, std::function<void(const QString &)> progress);

    Diagnosis run();

private:
    void signIn();
    void lookForId();
    void read();
    void readFor(qint64 id);

    // Only what --write allows.
    void write();
    void quote();
    void importAuto();
    void saveProfile();
    void signInAgain();
    void lookForQuote();
    void recover();
    void registerCustomer();
    void noteCreated(const QString &what, const std::optional<QString> &status, bool readable);

    void look(const Screen &screen) { m_diagnosis.screens.append(screen); }
    void skip(const QString &name, const QString &why) { look(notTried(name, why)); }

    const Order m_order;
    Diagnosis m_diagnosis;
    Asker m_asker;
    /// Goes into what is sent, so that it can be found again.
    QString m_mark;
    QString m_description;
    bool m_quoted = false;
    /// What the app would keep of the sign-in.
    qint64 m_id = 0;
    std::optional<QString> m_nombre;
    /// Asked for in place of m_id, where the app could not go on.
    std::optional<qint64> m_substitute;
};

} // namespace Check

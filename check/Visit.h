#pragma once

#include "Asker.h"

namespace Check {

/// Checks a server: signs in with the test customer, sends the requests of the screens, and records what the app
/// would do with each reply.
class Visit {
public:
    /// Calls `progress` with the endpoint before each request.
    Visit(Order order, std::function<void(const QString &)> progress);

    Diagnosis run();

private:
    void signIn();
    void lookForId();
    void read();
    void readFor(qint64 id);
    void tryWrongPassword();

    // These need --write.
    void write();
    void quote();
    void importAuto();
    void saveProfile();
    /// Saves the profile with the name that it has and a photo, or none to keep the old one.
    Screen savePhoto(const QByteArray &photo);
    void signInAgain();
    void lookAgain();
    void lookForPhoto(const DashboardResponse &listing);
    void lookForQuote(const QList<DashboardResponse::Cotizacion> &rows);
    void recover();
    void registerCustomer();
    /// Returns a random password that meets the app's rule.
    static QString anyPassword();
    void noteCreated(const QString &what, const std::optional<QString> &status, bool readable);

    void look(const Screen &screen) { m_diagnosis.screens.append(screen); }
    void skip(const QString &name, const QString &why) { look(notTried(name, why)); }

    const Order m_order;
    const std::function<void(const QString &)> m_progress;
    Diagnosis m_diagnosis;
    Asker m_asker;
    /// The time, and a few random digits for two checks within one second.
    const QString m_stamp;
    /// A text in the data that is sent, for finding it again.
    QString m_mark;
    QString m_description;
    bool m_quoted = false;
    /// The photo that was saved last, in base64.
    QString m_photo;
    /// The values that the app would store after the sign-in.
    qint64 m_id = 0;
    std::optional<QString> m_nombre;
    /// Used instead of m_id if the sign-in returns no number.
    std::optional<qint64> m_substitute;
};

} // namespace Check

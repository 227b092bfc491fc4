#pragma once

#include "Forms.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

/// What the service says to one request. Absent texts are left out; an unreadable reply is no JSON.
struct Reply {
    bool lost = false;
    bool readable = true;
    std::optional<QString> status;
    std::optional<QString> message;
    std::optional<QString> id;
    std::optional<QString> nombre;
    std::optional<QString> nombreCompleto;
    std::optional<int> paquetes;
    std::optional<int> cotizaciones;

    bool present() const { return !lost && readable; }
    bool success() const { return present() && status == QStringLiteral("success"); }
    QByteArray bytes() const;
};

/// What a customer should see, worked out without any of the app's code.
class Model {
public:
    enum class Kind { Login, Registro, Dashboard, Casillero, Cotizar, Autos, Perfil, Dev, Paquetes, Cotizaciones };

    struct Screen {
        Kind kind;
        QHash<QString, QString> fields{};
        QString msg{};
        bool alert = false;
        QString tipo = QStringLiteral("Aéreo");
        QString info = QStringLiteral("Cargando...");
        int paquetes = 0;
        int cotizaciones = 0;
    };
    using ScreenPtr = std::shared_ptr<Screen>;

    struct Page {
        Kind kind;
        /// An item that only screens of this kind have, and the item that opens them; empty for a first screen.
        QString mark;
        QString entrance;
        /// What they request when they appear, and which form they have.
        QByteArray appears{};
        QByteArray form{};
    };
    static const QList<Page> &pages();
    static const Page &pageOf(Kind kind);

    /// Without fields for a kind that has no form.
    static const Form &formOf(Kind kind);
    static QStringList fieldsOf(Kind kind);

    /// A request without its reply, and the screen that waits for it, which may have gone.
    struct Pending {
        QByteArray path;
        ScreenPtr screen;
        QHash<QString, QString> sent;
    };

    qint64 user = 0;
    QString nombre;
    QString email;
    QList<ScreenPtr> stack;
    QList<Pending> pending;
    qsizetype requests = 0;

    /// Just started, with this customer signed in; 0 for nobody.
    explicit Model(qint64 signedIn) : user(signedIn) { showRoot(); }

    Screen &top() const { return *stack.last(); }
    void push(Kind kind);
    void pop();
    void type(const QString &field, const QString &text);
    /// The one button of a form.
    void press();
    void sendRecovery();
    void signOut() { setUser(0); }
    void answer(qsizetype index, const Reply &reply);
    /// The value of a property of a named item; empty where the item is not visible.
    struct Shown {
        QString item;
        const char *property;
        QString value;
    };
    /// All that the top screen should show.
    QList<Shown> shown() const;

private:
    void showRoot();
    void setUser(qint64 id);
    void appear();
    void request(const QByteArray &path);
    void register_();
    void signInAnswered(const Pending &request, const Reply &reply, const QString &failure);
};

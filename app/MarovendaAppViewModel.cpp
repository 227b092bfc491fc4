#include "MarovendaAppViewModel.h"

#include "Background.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>

using namespace std::chrono_literals;

MarovendaAppViewModel::MarovendaAppViewModel(QObject *parent) : ViewModel(parent)
{
    connect(&Session::instance(), &Session::userIdChanged, this, &MarovendaAppViewModel::someoneSignedInChanged);
}

void MarovendaAppViewModel::iniciarSplash()
{
    logoOpacity = 1.0;
    logoScale = 1.0;
    // The first frame does not need the session.
    QTimer::singleShot(200ms, this, [] { Session::instance().prepare(); });
    // Read and check the photo once the logo's animation has ended, so that a damaged store is detected before the
    // first screen is chosen.
    QTimer::singleShot(1200ms, this, [] { Session::instance().userAvatarData(); });
    QTimer::singleShot(2500ms, Qt::PreciseTimer, this, [this] { showSplash = false; });
}

int MarovendaAppViewModel::windowFlags(int width, int height)
{
    // In QML, the first use of a name of the Qt namespace takes milliseconds.
    Qt::WindowFlags flags = Qt::Window;
    flags.setFlag(Qt::FramelessWindowHint, std::min(width, height) < 600);
    return static_cast<int>(flags.toInt());
}

void MarovendaAppViewModel::cargarFuentes()
{
    static auto *const loader = new Background(1, 0ms);
    const auto load = [] {
        const Background::Turn turn;
        return QFontMetricsF(QFont()).height();
    };
    const QPointer<MarovendaAppViewModel> self(this);
    loader->start(
        load, [self] { return self != nullptr; }, [self](qreal) { self->fontsLoaded = true; });
}

void MarovendaAppViewModel::faltanPantallas(const QString &reasons)
{
    std::fprintf(stderr, "marovenda: the screens cannot be loaded: %s\n",
                 qUtf8Printable(reasons.section(u'\n', 0, 0)));
}

// Loaded before a program's libraries, writes how far the program's start is to the file MAROVENDA_START_CLOCK: a
// line with the name and the time, in ms of the system's monotonic clock, of each moment. It stands between the
// program and the functions of Qt that every program with a window calls.

#include <QGuiApplication>
#include <QQuickWindow>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace {

void note(const char *moment)
{
    static std::FILE *const file = [] {
        const char *const path = std::getenv("MAROVENDA_START_CLOCK");
        return path ? std::fopen(path, "we") : nullptr;
    }();
    if (!file)
        return;
    const std::chrono::duration<double, std::milli> now = std::chrono::steady_clock::now().time_since_epoch();
    std::fprintf(file, "%s %.3f\n", moment, now.count());
    std::fflush(file);
}

template <class... Arguments>
void call(const char *function, const char *moment, Arguments... arguments)
{
    reinterpret_cast<void (*)(Arguments...)>(dlsym(RTLD_NEXT, function))(arguments...);
    note(moment);
}

// The system initialises this library after the libraries that it needs, which are the program's.
[[gnu::constructor]] void loaded() { note("loaded"); }

} // namespace

// The names are those of the compiled functions.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

// QGuiApplication::QGuiApplication(int &, char **, int)
void _ZN15QGuiApplicationC1ERiPPci(void *self, int *argc, char **argv, int flags)
{
    call("_ZN15QGuiApplicationC1ERiPPci", "application", self, argc, argv, flags);
}

// QQmlApplicationEngine::QQmlApplicationEngine(QObject *)
void _ZN21QQmlApplicationEngineC1EP7QObject(void *self, void *parent)
{
    call("_ZN21QQmlApplicationEngineC1EP7QObject", "engine", self, parent);
}

// QQmlApplicationEngine::load(const QUrl &)
void _ZN21QQmlApplicationEngine4loadERK4QUrl(void *self, const void *url)
{
    call("_ZN21QQmlApplicationEngine4loadERK4QUrl", "window", self, url);
}

// QGuiApplication::exec()
int _ZN15QGuiApplication4execEv()
{
    for (QWindow *const window : QGuiApplication::topLevelWindows()) {
        if (auto *const shown = qobject_cast<QQuickWindow *>(window))
            QObject::connect(
                shown, &QQuickWindow::frameSwapped, shown, [] { note("frame"); }, Qt::SingleShotConnection);
    }
    return reinterpret_cast<int (*)()>(dlsym(RTLD_NEXT, "_ZN15QGuiApplication4execEv"))();
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

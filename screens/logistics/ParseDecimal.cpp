#include "ParseDecimal.h"

#include <clocale>
#include <cstdlib>
#include <string_view>

// strtod with a locale has a different name and header on each platform.
#if defined(_WIN32)
#include <locale.h>
#elif defined(__APPLE__)
#include <xlocale.h>
#else
#include <locale.h> // NOLINT(modernize-deprecated-headers): the POSIX one
#endif

namespace {

double convert(const char *from, char **end)
{
#if defined(_WIN32)
    static const _locale_t classic = _create_locale(LC_ALL, "C");
    return _strtod_l(from, end, classic);
#else
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(from, end, classic);
#endif
}

} // namespace

double parseDecimal(const QString &text)
{
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    const QByteArray bytes = text.toUtf8();
    if (bytes.isEmpty() || whiteSpace.find(bytes.front()) != std::string_view::npos)
        return 0;
    char *end = nullptr;
    const double number = convert(bytes.constData(), &end);
    return end == bytes.constData() + bytes.size() ? number : 0;
}

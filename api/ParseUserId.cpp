#include "ParseUserId.h"

#include <charconv>

qint64 parseUserId(const std::optional<QString> &id)
{
    const QByteArray text = id ? id->toUtf8() : QByteArray();
    const char *from = text.constData();
    const char *const end = from + text.size();
    // from_chars accepts a minus but no plus.
    if (text.startsWith('+') && !text.startsWith("+-"))
        ++from;
    qint64 number = 0;
    const auto [stopped, error] = std::from_chars(from, end, number);
    return error == std::errc() && stopped == end ? number : 0;
}

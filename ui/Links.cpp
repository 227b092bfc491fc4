#include "Links.h"

#include <QDesktopServices>

using namespace Qt::StringLiterals;

namespace {

bool isAllowed(const QUrl &url)
{
    if (!url.isValid())
        return false;
    if (url.scheme() == "https"_L1)
        return !url.host().isEmpty();
    return url.scheme() == "mailto"_L1 && !url.path().isEmpty();
}

} // namespace

QUrl Links::fromText(const QString &text)
{
    const QUrl url(text, QUrl::TolerantMode);
    return isAllowed(url) ? url : QUrl();
}

void Links::open(const QUrl &url)
{
    if (isAllowed(url))
        QDesktopServices::openUrl(url);
}

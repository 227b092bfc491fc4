#include "Text.h"

using namespace Qt::StringLiterals;

namespace {

bool isHarmful(char32_t point)
{
    switch (QChar::category(point)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

} // namespace

QString Check::harmless(const QString &text)
{
    QString clean;
    clean.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t point = pair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode();
        for (const QChar unit : QStringView(text).sliced(i, pair ? 2 : 1))
            clean += isHarmful(point) ? u"\\u%1"_s.arg(uint(unit.unicode()), 4, 16, QChar(u'0')) : QString(unit);
        i += pair ? 1 : 0;
    }
    return clean;
}

QString Check::quoted(const QString &text, qsizetype most)
{
    const bool whole = text.size() <= most;
    qsizetype end = whole ? text.size() : most;
    if (!whole && text[end - 1].isHighSurrogate())
        --end;
    return u'"' + harmless(text.first(end)) + (whole ? u"\""_s : u"…\""_s);
}

QString Check::counted(qsizetype number, const QString &noun)
{
    return QString::number(number) + u' ' + noun + (number == 1 ? QString() : u"s"_s);
}

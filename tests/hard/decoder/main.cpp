// What check.py runs without a fuzzer: "replay FOLDER..." reads documents that are kept, "properties SEED COUNT"
// writes random records and reads them again.

#include "Judgement.h"
#include "Properties.h"
#include "Tally.h"

#include <QDirIterator>
#include <QFile>

#include <memory>

using namespace Qt::StringLiterals;
using SecondLibrary::Document;

namespace {

constexpr auto repeatedKey = "repeated key, of which the last counts";
constexpr auto byteOrderMark = "byte-order mark that is skipped";

const char *name(Document::Kind kind)
{
    switch (kind) {
    case Document::Kind::json:
        return "document that both libraries take";
    case Document::Kind::refused:
        return "bytes that both libraries refuse";
    case Document::Kind::beyondNumber:
        return "whole number beyond 64 bits";
    case Document::Kind::beyondDepth:
        return "nesting beyond 1,024";
    }
    return "";
}

/// Does with each file what the fuzzer does with its inputs, under the sanitizers of this build.
int replay(const QStringList &folders)
{
    Tally tally;
    QSet<QByteArray> missing = {name(Document::Kind::json),
                                name(Document::Kind::refused),
                                name(Document::Kind::beyondNumber),
                                name(Document::Kind::beyondDepth),
                                repeatedKey,
                                byteOrderMark};
    const auto note = [&](const char *what, const QString &file, const QByteArray &wrong) {
        missing.remove(what);
        tally.note(what, wrong.isEmpty(), file.toUtf8() + ": " + wrong);
    };
    for (const QString &folder : folders) {
        QDirIterator files(folder, QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QFile::ReadOnly))
                qFatal("cannot read %s", qUtf8Printable(file.fileName()));
            const QByteArray read = file.readAll();
            // A copy without a byte of room, so that reading beyond the end is seen.
            const auto exact = std::make_unique<char[]>(std::size_t(read.size()));
            std::copy(read.begin(), read.end(), exact.get());
            const QByteArrayView bytes(exact.get(), read.size());
            const Document document = SecondLibrary::parse(bytes);
            const QByteArray wrong = judge(bytes, document);
            note(name(document.kind), file.fileName(), wrong);
            if (document.repeatedKey && document.kind == Document::Kind::json)
                note(repeatedKey, file.fileName(), wrong);
            if (document.byteOrderMark && document.kind == Document::Kind::json)
                note(byteOrderMark, file.fileName(), wrong);
        }
    }
    for (const QByteArray &what : std::as_const(missing))
        tally.note(what, false, "no document shows it");
    return tally.finish();
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments += QFile::decodeName(argv[index]);
    const QString what = arguments.value(0);
    if (what == u"replay"_s && arguments.size() > 1)
        return replay(arguments.sliced(1));
    if (what == u"properties"_s && arguments.size() == 3)
        return tryProperties(arguments[1].toULongLong(), arguments[2].toInt());
    qCritical("what is to be done?");
    return 2;
}

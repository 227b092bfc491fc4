// What check.py runs without a fuzzer: does with the documents of some folders what the fuzzer does with its own:
// decoder-check FOLDER...

#include "Contents.h"
#include "Judgement.h"
#include "Tally.h"

#include <QDirIterator>

#include <array>
#include <memory>

namespace {

/// In the order of `SecondLibrary::Document::Kind`.
constexpr std::array kinds{"document that both libraries take", "bytes that both libraries refuse",
                           "whole number beyond 64 bits", "nesting beyond 1,024"};

/// Under the sanitizers of this build.
void replay(Tally &tally, const QString &folder)
{
    QDirIterator files(folder, QDir::Files);
    while (files.hasNext()) {
        const QString name = files.next();
        const QByteArray read = contents(name);
        // A copy without a byte of room, so that reading beyond the end is seen.
        const auto exact = std::make_unique<char[]>(std::size_t(read.size()));
        std::copy(read.begin(), read.end(), exact.get());
        const QByteArrayView bytes(exact.get(), read.size());
        const auto document = SecondLibrary::parse(bytes);
        const QByteArray wrong = judge(bytes, document);
        tally.note(kinds[std::size_t(document.kind)], wrong.isEmpty(), name.toUtf8() + ": " + wrong);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    Tally tally;
    for (int index = 1; index < argc; ++index)
        replay(tally, QFile::decodeName(argv[index]));
    return tally.finish();
}

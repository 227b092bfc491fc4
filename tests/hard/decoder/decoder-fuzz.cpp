// The fuzzer's target: bytes that the app's reader, its writer, marovenda-check and the second library judge alike.

#include "JsonTrouble.h"
#include "SecondLibrary.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;
using SecondLibrary::Document;

namespace {

template <Record R>
bool same(const Json::ReadResult<R> &one, const Json::ReadResult<R> &other)
{
    return RecordTools::same(one.record, other.record) && one.error == other.error;
}

template <Record R>
QByteArray judgeAgain(const R &record)
{
    const auto written = Json::write(record);
    if (!written)
        return "read, but cannot be written"_ba;
    const auto again = Json::read<R>(*written);
    if (!again || !RecordTools::same(*again.record, record))
        return "is another one when written and read again: "_ba + *written;
    const auto tree = SecondLibrary::json::parse(written->begin(), written->end(), nullptr, false);
    if (tree.is_discarded() || !SecondLibrary::fits(tree, record) || !SecondLibrary::agrees(tree, record))
        return "is another to the second library when written: "_ba + *written;
    // Compact, in the order of the fields, and escaped no more than needed: the second library's own form, in which
    // "/" stands for itself. The doubles of this record have more than one shortest form.
    QByteArray form = QByteArray::fromStdString(tree.dump());
    if (!std::is_same_v<R, CotizacionRequest> && *written != form.replace("/", "\\/"))
        return "is not written the shortest way: "_ba + *written;
    return {};
}

template <Record R>
QByteArray judgeAs(QByteArrayView bytes, const Document &document)
{
    const auto result = Json::read<R>(bytes);
    // The second time by the other entrance.
    if (!same(result, Json::readAndFree<R>(bytes.toByteArray())))
        return "another result the second time"_ba;
    if (bool(result) != result.error.isEmpty())
        return "a record and a reason, or neither"_ba;
    const bool isJson = document.kind == Document::Kind::json;
    if (result.error.startsWith("not JSON: "_L1) == isJson)
        return isJson ? "refused as no JSON" : "taken for JSON";
    if (bool(result) != (isJson && SecondLibrary::fits(document.root, R())))
        return result ? "taken for a record"_ba : "no record: "_ba + result.error.toUtf8();
    if (!result)
        return {};
    if (!SecondLibrary::agrees(document.root, *result.record))
        return "other values"_ba;
    return judgeAgain(*result.record);
}

/// Whether marovenda-check names a place where the reader refuses the bytes, and none where it does not.
bool namesThePlace(QByteArrayView bytes, bool isJson)
{
    const auto trouble = Check::findJsonTrouble(bytes);
    if (!trouble || isJson)
        return !trouble && isJson;
    return trouble->offset >= 0 && trouble->offset <= bytes.size() && !trouble->what.isEmpty();
}

/// Reads the bytes as each of the thirteen records and holds the result against the second library's view of them.
/// Returns what is wrong, or nothing.
QByteArray judge(QByteArrayView bytes, const Document &document)
{
    using RecordTools::All;
    // What is refused as a whole is refused before any record: one of them is enough, another for each length.
    const bool isJson = document.kind == Document::Kind::json;
    const qsizetype only = bytes.size() % qsizetype(boost::mp11::mp_size<All>::value);
    QByteArray wrong = namesThePlace(bytes, isJson) ? ""_ba : "marovenda-check finds another place, or none"_ba;
    qsizetype index = 0;
    RecordTools::forEachRecord<All>([&]<Record R>(const R &) {
        if ((!isJson && index++ != only) || !wrong.isEmpty())
            return;
        wrong = judgeAs<R>(bytes, document);
        if (!wrong.isEmpty())
            wrong.prepend(RecordTools::name<R> + ": "_ba);
    });
    return wrong;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const QByteArray wrong = judge(bytes, SecondLibrary::parse(bytes));
    if (!wrong.isEmpty()) {
        std::fprintf(stderr, "%s\n", wrong.constData());
        std::abort();
    }
    return 0;
}

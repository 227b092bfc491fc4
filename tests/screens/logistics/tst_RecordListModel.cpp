#include "MarovendaTest.h"
#include "RecordListModel.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// Text that counts how often it is copied and compared.
struct Counted {
    QString text;

    Counted(QString text = {}) : text(std::move(text)) {}
    Counted(const Counted &other) : text(other.text) { ++copies; }
    Counted(Counted &&) = default;
    Counted &operator=(const Counted &other)
    {
        text = other.text;
        ++copies;
        return *this;
    }
    Counted &operator=(Counted &&) = default;
    ~Counted() = default;
    friend bool operator==(const Counted &one, const Counted &other)
    {
        ++comparisons;
        return one.text == other.text;
    }

    static inline int copies = 0;
    static inline int comparisons = 0;
};

struct Row {
    std::optional<QString> id;
    std::optional<Counted> text;
    std::optional<QString> more;
};
BOOST_DESCRIBE_STRUCT(Row, (), (id, text, more))

int identitiesRead = 0;

const std::optional<QString> &idOf(const Row &row)
{
    ++identitiesRead;
    return row.id;
}

using Model = RecordListModel<Row>;

/// Rows written as "A B:x -:y:z", each an identity ("-" for an absent one, "0" for an empty one), a text and more.
QList<Row> rowsOf(const QString &written)
{
    QList<Row> rows;
    for (const QString &each : written.split(u' ', Qt::SkipEmptyParts)) {
        const QStringList fields = each.split(u':');
        Row row;
        if (fields[0] != u"-"_s)
            row.id = fields[0] == u"0"_s ? u""_s : fields[0];
        if (fields.size() > 1)
            row.text = Counted(fields[1]);
        if (fields.size() > 2)
            row.more = fields[2];
        rows.append(row);
    }
    return rows;
}

QVariant identityOf(const QList<Row> &rows, qsizetype row, bool byPosition)
{
    if (byPosition)
        return static_cast<int>(row);
    return rows[row].id ? QVariant(*rows[row].id) : QVariant();
}

/// What becomes of each row: the first of an identity that is not taken, -1 for none. Plain, and slow.
QList<qsizetype> followed(const QList<Row> &before, const QList<Row> &after, bool byPosition)
{
    QList<qsizetype> found;
    for (qsizetype row = 0; row < before.size(); ++row) {
        qsizetype to = 0;
        while (to < after.size() &&
               (found.contains(to) || identityOf(after, to, byPosition) != identityOf(before, row, byPosition)))
            ++to;
        found.append(to < after.size() ? to : -1);
    }
    return found;
}

/// A model with a tester on it, and what it tells: "insert 1-2", "remove 0-0", "change 3-3 text more", "reset".
class Told {
public:
    explicit Told(Model::Identity identity) : model(identity)
    {
        QObject::connect(&model, &Model::rowsInserted, [this](const QModelIndex &, int first, int last) {
            said.append(u"insert %1-%2"_s.arg(first).arg(last));
        });
        QObject::connect(&model, &Model::rowsRemoved, [this](const QModelIndex &, int first, int last) {
            said.append(u"remove %1-%2"_s.arg(first).arg(last));
        });
        QObject::connect(&model, &Model::modelReset, [this] { said.append(u"reset"_s); });
        QObject::connect(&model, &Model::dataChanged,
                         [this](const QModelIndex &first, const QModelIndex &last, const QList<int> &roles) {
                             QString what = u"change %1-%2"_s.arg(first.row()).arg(last.row());
                             for (const int role : roles)
                                 what += u' ' + QString::fromLatin1(model.roleNames().value(role));
                             said.append(what);
                         });
        QObject::connect(&model, &Model::layoutChanged, [this] { said.append(u"layout"_s); });
        QObject::connect(&model, &Model::rowsMoved, [this] { said.append(u"move"_s); });
    }

    /// Empty, or what the model shows instead of these rows.
    QString wrong(const QList<Row> &rows, bool byPosition) const
    {
        if (model.rowCount() != rows.size())
            return u"%1 rows"_s.arg(model.rowCount());
        const auto shown = [&](int row, const char *role) {
            return model.data(model.index(row, 0), model.roleNames().key(role));
        };
        for (int row = 0; row < model.rowCount(); ++row) {
            const Row &wanted = rows[row];
            if (shown(row, "identity") != identityOf(rows, row, byPosition) ||
                shown(row, "id") != (wanted.id ? QVariant(*wanted.id) : QVariant()) ||
                shown(row, "text").value<Counted>().text != wanted.text.value_or(Counted()).text ||
                shown(row, "text").isValid() != wanted.text.has_value() ||
                shown(row, "more") != (wanted.more ? QVariant(*wanted.more) : QVariant()))
                return u"row %1"_s.arg(row);
        }
        return {};
    }

    Model model;
    QStringList said;

private:
    QAbstractItemModelTester m_tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
};

} // namespace

class RecordListModelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void tellsWhatIsDifferent_data();
    void tellsWhatIsDifferent();
    void anyRowsBecomeAnyOthers_data();
    void anyRowsBecomeAnyOthers();
    void manyRowsTakeTimeInProportion_data();
    void manyRowsTakeTimeInProportion();

private:
    /// Fails unless the rows replace those of the model, and each row that stays keeps its index.
    static void replace(Told &told, const QList<Row> &before, const QList<Row> &after, bool byPosition)
    {
        QList<QPersistentModelIndex> indexes;
        for (int row = 0; row < told.model.rowCount(); ++row)
            indexes.append(told.model.index(row, 0));
        told.said.clear();
        told.model.setRows(after);
        QCOMPARE(told.wrong(after, byPosition), QString());
        const QList<qsizetype> wanted = followed(before, after, byPosition);
        QList<qsizetype> stay = wanted;
        stay.removeAll(-1);
        if (told.said == QStringList(u"reset"_s)) {
            QVERIFY(stay.isEmpty() || !std::is_sorted(stay.begin(), stay.end()));
            return;
        }
        QVERIFY(std::is_sorted(stay.begin(), stay.end()));
        for (qsizetype row = 0; row < indexes.size(); ++row) {
            QCOMPARE(indexes[row].isValid(), wanted[row] >= 0);
            QCOMPARE(indexes[row].row(), static_cast<int>(wanted[row]));
        }
    }
};

void RecordListModelTest::tellsWhatIsDifferent_data()
{
    const auto add = columns<QString, QString, QStringList, bool>("before", "after", "said", "byPosition");
    const auto row = [&add](const char *name, const QString &before, const QString &after, const QStringList &said,
                            bool byPosition = false) { add(name, before, after, said, byPosition); };
    row("same rows", u"A:x B:y C"_s, u"A:x B:y C"_s, {});
    row("no rows", u""_s, u""_s, {});
    row("one changed field", u"A:x B:y C:z"_s, u"A:x B:n C:z"_s, {u"change 1-1 text"_s});
    row("a field that comes", u"A B"_s, u"A B::m"_s, {u"change 1-1 text more"_s});
    row("a field that goes", u"A:x B:y"_s, u"A B:y"_s, {u"change 0-0 text"_s});
    row("neighbours changed alike", u"A:x B:y C:z D"_s, u"A:1 B:2 C:z D:4"_s,
        {u"change 0-1 text"_s, u"change 3-3 text"_s});
    row("neighbours changed unlike", u"A:x:m B:y:m"_s, u"A:1:m B:2:n"_s,
        {u"change 0-0 text"_s, u"change 1-1 text more"_s});
    row("appended", u"A B"_s, u"A B C D"_s, {u"insert 2-3"_s});
    row("removed at the beginning", u"A B C"_s, u"C"_s, {u"remove 0-1"_s});
    row("replaced in the middle", u"A B C"_s, u"A D E C"_s, {u"remove 1-1"_s, u"insert 1-2"_s});
    row("runs here and there", u"A B C D E"_s, u"F A C E G"_s,
        {u"insert 0-0"_s, u"remove 2-2"_s, u"remove 3-3"_s, u"insert 4-4"_s});
    row("duplicates stay", u"A:1 A:2"_s, u"A:1 A:2"_s, {});
    row("one duplicate less", u"A:1 A:2 B"_s, u"A:2 B"_s, {u"remove 1-1"_s, u"change 0-0 text"_s});
    row("duplicates apart", u"A:1 B A:2 C"_s, u"D A:1 C A:2"_s, {u"reset"_s});
    row("duplicates drift", u"A:1 B A:2"_s, u"D A:1 A:2"_s, {u"insert 0-0"_s, u"remove 2-2"_s});
    row("absent identities are alike", u"- -:x"_s, u"- -:x -"_s, {u"insert 2-2"_s});
    row("absent is not empty", u"- 0 A"_s, u"0 A"_s, {u"remove 0-0"_s});
    row("all new", u"A B"_s, u"C D E"_s, {u"reset"_s});
    row("empty to full", u""_s, u"A B C"_s, {u"reset"_s});
    row("full to empty", u"A B C"_s, u""_s, {u"reset"_s});
    row("reordered", u"A B C"_s, u"A C B"_s, {u"reset"_s});
    row("by position: changed", u"A B C"_s, u"C B A"_s, {u"change 0-0 id"_s, u"change 2-2 id"_s}, true);
    row("by position: longer", u"A B"_s, u"C B A"_s, {u"change 0-0 id"_s, u"insert 2-2"_s}, true);
    row("by position: shorter", u"A B C"_s, u"B"_s, {u"remove 1-2"_s, u"change 0-0 id"_s}, true);
}

void RecordListModelTest::tellsWhatIsDifferent()
{
    QFETCH(bool, byPosition);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QStringList, said);
    Told told(byPosition ? Model::byPosition : idOf);
    told.model.setRows(rowsOf(before));
    replace(told, rowsOf(before), rowsOf(after), byPosition);
    // Runs and changes may be told in either order.
    told.said.sort();
    said.sort();
    QCOMPARE(told.said, said);
}

void RecordListModelTest::anyRowsBecomeAnyOthers_data()
{
    QTest::addColumn<bool>("byPosition");
    QTest::newRow("by a field") << false;
    QTest::newRow("by position") << true;
}

void RecordListModelTest::anyRowsBecomeAnyOthers()
{
    QFETCH(bool, byPosition);
    QRandomGenerator random(20); // always the same numbers
    Told told(byPosition ? Model::byPosition : idOf);
    const QStringList ids{u"-"_s, u"0"_s, u"A"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s, u"G"_s};
    const QStringList contents{u""_s, u":x"_s, u":y"_s, u":x:m"_s};
    const auto any = [&](const QStringList &from) { return from[random.bounded(static_cast<int>(from.size()))]; };
    QStringList before;
    int resets = 0;
    for (int round = 0; round < 3000; ++round) {
        // Mostly an edit of what is there, at times something else altogether.
        QStringList after = random.bounded(20) == 0 ? QStringList() : before;
        for (int edits = random.bounded(5); edits > 0; --edits) {
            const qsizetype at = random.bounded(static_cast<int>(after.size()) + 1);
            if (at < after.size() && random.bounded(2) == 0)
                after.removeAt(at);
            else if (after.size() < 12)
                after.insert(at, any(ids) + any(contents));
        }
        for (QString &each : after) {
            if (random.bounded(6) == 0)
                each = each.section(u':', 0, 0) + any(contents);
        }
        const QString change = before.join(u' ') + u" > "_s + after.join(u' ');
        replace(told, rowsOf(before.join(u' ')), rowsOf(after.join(u' ')), byPosition);
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(change));
        resets += static_cast<int>(told.said.count(u"reset"_s));
        before = after;
    }
    QVERIFY2(resets < 1500, qPrintable(QString::number(resets)));
}

void RecordListModelTest::manyRowsTakeTimeInProportion_data()
{
    const auto row = columns<QStringList, QStringList, qsizetype>("before", "after", "signalCount");
    constexpr int many = 20'000;
    QStringList rows, halfChanged, odd, twice, alike;
    for (int i = 0; i < many; ++i) {
        const QString id = QString::number(i);
        rows.append(id + u":x"_s);
        halfChanged.append(id + (i % 2 ? u":x"_s : u":y"_s));
        if (i % 2)
            odd.append(id + u":x"_s);
        twice.append({id + u":x"_s, u"n"_s + id});
        alike.append(u"-:"_s + id);
    }
    const QStringList reversed(rows.rbegin(), rows.rend());
    row("every second changed", rows, halfChanged, 1001);
    row("every second removed", rows, odd, 1);
    row("one after each inserted", rows, twice, 1);
    row("every second of the first removed", rows, odd.first(1000) + rows.sliced(2000), 1000);
    row("one more", rows, odd.first(1001) + rows.sliced(2002), 1);
    row("all of one identity", alike, QStringList(u"n"_s) + alike.sliced(1), 3);
    row("reversed", rows, reversed, 1);
}

void RecordListModelTest::manyRowsTakeTimeInProportion()
{
    QFETCH(QStringList, before);
    QFETCH(QStringList, after);
    QFETCH(qsizetype, signalCount);
    const QList<Row> first = rowsOf(before.join(u' '));
    const QList<Row> second = rowsOf(after.join(u' '));
    Model model(idOf);
    model.setRows(first);
    qsizetype told = 0;
    for (const auto signal : {&Model::rowsInserted, &Model::rowsRemoved})
        connect(&model, signal, this, [&] { ++told; });
    connect(&model, &Model::dataChanged, this, [&] { ++told; });
    connect(&model, &Model::modelReset, this, [&] { ++told; });
    Counted::copies = Counted::comparisons = identitiesRead = 0;
    model.setRows(second);
    const qsizetype all = first.size() + second.size();
    QCOMPARE(told, signalCount);
    QVERIFY2(identitiesRead <= 2 * all, qPrintable(QString::number(identitiesRead)));
    QVERIFY2(Counted::comparisons <= all, qPrintable(QString::number(Counted::comparisons)));
    // No row is moved for another.
    QCOMPARE(Counted::copies, 0);
    QCOMPARE(model.rowCount(), static_cast<int>(second.size()));
}

MAROVENDA_TEST(RecordListModelTest)
#include "tst_RecordListModel.moc"

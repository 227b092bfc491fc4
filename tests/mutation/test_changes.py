"""What counts as a change of the product, on a few lines of each language."""

import unittest

from changes import changes_of

CPP = '''
#include "Name.h"
/// "A comment", if (true).
static_assert(sizeof(int) > 2, "never");
enum class Kind { First = 1 };
int twice(int count, std::vector<int> &&rows)
{
    QString name = u"ñ \\"one\\""_s;
    const int most = 0x10;
    rows.reserve(20);
    setObjectName("handle");
    if (count < most && !name.isEmpty())
        count += 1;
    rows.clear();
    return count == 3 ? 1'000 : 0;
}
'''

QML = '''
import QtQuick 2.15
Item {
    objectName: "handle"
    color: "#00FF80"
    width: wide ? 16 : 0.5
    onWidthChanged: list.update()
    onMoved: to => list.place = to
    Keys.onPressed: event => {
        if (event.isAutoRepeat) return
        let place = "a"
        list.go(place)
    }
    Text { text: list.title(wide) }
}
'''


class ChangesTest(unittest.TestCase):
    maxDiff = None

    def test_cpp(self):
        self.assertEqual([f"{change.line} {change}" for change in changes_of("twice.cpp", CPP)], [
            '8 u"ñ \\"one\\""_s -> u""_s',
            "9 0x10 -> 0x50",
            "12 (count < most && !name.isEmpty()) -> (!(count < most && !name.isEmpty()))",
            "12 < -> <=",
            "12 && -> ||",
            "13 count += 1 -> {}",
            "13 1 -> 0",
            "14 rows.clear() -> {}",
            "15 == -> !=",
            "15 3 -> 5",
            "15 1'000 -> 1501",
            "15 0 -> 1"])

    def test_qml(self):
        self.assertEqual([f"{change.line} {change}" for change in changes_of("Page.qml", QML)], [
            '5 "#00FF80" -> "#887708"',
            "6 wide -> !(wide)",
            "6 16 -> 25",
            "6 0.5 -> 1.75",
            "7 list.update() -> {}",
            "8 list.place = to -> {}",
            "10 (event.isAutoRepeat) -> (!(event.isAutoRepeat))",
            '11 "a" -> ""',
            "12 list.go(place) -> {}"])

    def test_applied(self):
        change = changes_of("Page.qml", QML)[0]
        self.assertEqual(change.applied(QML), QML.replace("#00FF80", "#887708"))


if __name__ == "__main__":
    unittest.main()

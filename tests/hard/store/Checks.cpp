#include "Checks.h"

using Stores::Values;

namespace Checks {

Write::Write(qint64 number)
{
    std::mt19937_64 random(static_cast<std::uint64_t>(number));
    random.discard(3);
    index = random() % SessionStore::keys.size();
    const QByteArray name = QByteArray::number(number);
    switch (SessionStore::keys[index]) {
    case SessionStore::Key::UserId:
        value = name;
        break;
    case SessionStore::Key::UserNombre:
    case SessionStore::Key::UserEmail:
        value = (name + "ñ ").repeated(between(random, 1, 40));
        break;
    case SessionStore::Key::UserAvatar:
        value =
            (name + '\0').repeated(between(random, 0, 3) == 0 ? between(random, 1, 20'000) : between(random, 1, 900));
        break;
    }
}

Values after(Values values, qint64 number)
{
    const Write write(number);
    values[write.index] = write.value;
    return values;
}

QByteArray tell(const Values &values)
{
    QByteArray all;
    for (const auto &value : values) {
        all += all.isEmpty() ? "[" : ", ";
        if (value)
            all +=
                value->first(std::min<qsizetype>(value->size(), 12)) + " (" + QByteArray::number(value->size()) + ')';
        else
            all += "nothing";
    }
    return all.replace('\0', '.') + ']';
}

} // namespace Checks

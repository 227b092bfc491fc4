// Writes values until it is killed, or once:
//
//   session-writer DIRECTORY FIRST    the four values over and over, three of them at once, and says after each round
//   that all of it was taken session-writer DIRECTORY sample   those of the tests, which is how a release's store in
//   stores/ is made

#include "SessionStore.h"
#include "Stores.h"

#include <QFile>

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    if (argc != 3)
        return EXIT_FAILURE;
    SessionStore store(QFile::decodeName(argv[1]), [](const QString &line) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(line));
        std::exit(EXIT_FAILURE);
    });
    if (qstrcmp(argv[2], "sample") == 0) {
        for (std::size_t i = 0; i < SessionStore::keys.size(); ++i)
            store.write(SessionStore::keys[i], *Stores::sample[i]);
        return EXIT_SUCCESS;
    }
    for (int round = QByteArray(argv[2]).toInt();; ++round) {
        const QByteArray number = QByteArray::number(round);
        // Each value tells its round; the photo is large enough for a kill to meet it half written.
        store.write({{SessionStore::Key::UserId, number},
                     {SessionStore::Key::UserNombre, "nombre " + number},
                     {SessionStore::Key::UserEmail, "email " + number}});
        store.write(SessionStore::Key::UserAvatar, (number + ' ').repeated(20'000));
        std::printf("%d\n", round);
        std::fflush(stdout);
    }
}

// Writes the four values over and over until it is killed, and says after each round that all of it was taken:
//
//   session-writer DIRECTORY FIRST

#include "SessionStore.h"

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
    for (int round = QByteArray(argv[2]).toInt();; ++round) {
        const QByteArray number = QByteArray::number(round);
        // Each value tells its round; the photo is large enough for a kill to meet it half written.
        store.write(SessionStore::Key::UserId, number);
        store.write(SessionStore::Key::UserNombre, "nombre " + number);
        store.write(SessionStore::Key::UserEmail, "email " + number);
        store.write(SessionStore::Key::UserAvatar, (number + ' ').repeated(20'000));
        std::printf("%d\n", round);
        std::fflush(stdout);
    }
}

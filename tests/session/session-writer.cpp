// Writes the values of the tests, which is how a release's store in stores/ is made: session-writer DIRECTORY

#include "SessionStore.h"
#include "Stores.h"

#include <QFile>

#include <cstdlib>

int main(int argc, char *argv[])
{
    if (argc != 2)
        return EXIT_FAILURE;
    const Stores::Watched store(QFile::decodeName(argv[1]));
    return store.write(Stores::sample) ? EXIT_SUCCESS : EXIT_FAILURE;
}

#include "Password.h"

#include <sodium.h>

#include <array>
#include <new>

namespace {

constexpr unsigned long long passes = 2;
constexpr std::size_t memory = std::size_t(19) * 1024 * 1024;

using Hash = std::array<char, crypto_pwhash_STRBYTES>;

void prepareLibrary()
{
    static const int ready = sodium_init();
    if (ready < 0)
        throw std::bad_alloc();
}

} // namespace

QByteArray hashPassword(const QString &password)
{
    prepareLibrary();
    const QByteArray text = password.toUtf8();
    Hash hash = {};
    if (crypto_pwhash_str_alg(hash.data(), text.constData(), static_cast<unsigned long long>(text.size()), passes,
                              memory, crypto_pwhash_ALG_ARGON2ID13) != 0)
        throw std::bad_alloc();
    return QByteArray(hash.data());
}

bool isPassword(const QString &password, const QByteArray &hash)
{
    prepareLibrary();
    static const QByteArray dummyHash = hashPassword(QString());
    const QByteArray text = password.toUtf8();
    Hash kept = {};
    const QByteArray &against = hash.isEmpty() ? dummyHash : hash;
    std::copy_n(against.constData(), std::min<std::size_t>(against.size(), kept.size() - 1), kept.begin());
    const bool fits =
        crypto_pwhash_str_verify(kept.data(), text.constData(), static_cast<unsigned long long>(text.size())) == 0;
    return fits && !hash.isEmpty();
}

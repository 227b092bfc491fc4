#include "PasswordRule.h"

#include <unicode/uregex.h>

#include <memory>

namespace {

struct Closer {
    void operator()(URegularExpression *expression) const { uregex_close(expression); }
};

} // namespace

bool isAllowedPassword(const QString &password)
{
    // ICU and QRegularExpression differ in what \W matches; the rule follows ICU.
    static constexpr char16_t rule[] = u"(?=.*[A-Z])(?=.*[\\W_])";
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<URegularExpression, Closer> expression(uregex_open(rule, -1, 0, nullptr, &status));
    const auto *const text = reinterpret_cast<const char16_t *>(password.utf16());
    uregex_setText(expression.get(), text, static_cast<int32_t>(password.size()), &status);
    const bool found = uregex_find(expression.get(), 0, &status) != 0;
    return U_SUCCESS(status) && found;
}

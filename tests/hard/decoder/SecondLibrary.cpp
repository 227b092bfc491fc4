#include "SecondLibrary.h"

namespace SecondLibrary {

namespace {

constexpr std::size_t deepest = 1024;

/// Notes on the way through a document what its tree does not tell any more.
class Survey : public nlohmann::json_sax<json> {
public:
    bool beyondNumber = false;
    /// The root is on level 1, and every value is a level below what holds it.
    std::size_t depth = 0;

    bool null() override { return value(); }
    bool boolean(bool) override { return value(); }
    bool number_integer(number_integer_t) override { return value(); }
    bool number_unsigned(number_unsigned_t) override { return value(); }
    bool number_float(number_float_t, const string_t &token) override
    {
        // The library takes a whole number that is too large for 64 bits for a double.
        beyondNumber = beyondNumber || token.find_first_of(".eE") == string_t::npos;
        return value();
    }
    bool string(string_t &) override { return value(); }
    bool binary(binary_t &) override { return value(); }
    bool start_object(std::size_t) override { return open(); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(); }
    bool end_array() override { return close(); }
    bool key(string_t &) override { return true; }
    bool parse_error(std::size_t, const std::string &, const nlohmann::detail::exception &) override { return false; }

private:
    bool value()
    {
        depth = std::max(depth, m_open + 1);
        return true;
    }
    bool open()
    {
        value();
        ++m_open;
        return true;
    }
    bool close()
    {
        --m_open;
        return true;
    }

    std::size_t m_open = 0;
};

} // namespace

Document parse(QByteArrayView bytes)
{
    Document document;
    // This library skips one mark as well. A zero byte is the end of the document to it; in JSON it may stand
    // nowhere.
    Survey survey;
    if (bytes.contains('\0') || !json::sax_parse(bytes.begin(), bytes.end(), &survey))
        return document;
    if (survey.depth > deepest) {
        document.kind = Document::Kind::beyondDepth;
    } else if (survey.beyondNumber) {
        document.kind = Document::Kind::beyondNumber;
    } else {
        document.kind = Document::Kind::json;
        // Of a repeated key the last value counts here, too.
        document.root = json::parse(bytes.begin(), bytes.end());
    }
    return document;
}

} // namespace SecondLibrary

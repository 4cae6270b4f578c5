#include "language/translation.h"

#include <clocale>
#include <filesystem>
#include <libintl.h>
#include <string_view>
#include <system_error>

namespace zembrastel {
namespace {

constexpr const char* catalogue = "zembrastel";

// The locale of the messages; null until the start.
locale_t messageLocale = nullptr;

// While it lives, gettext and nothing else of this thread uses the user's language.
class UserLanguage {
public:
    UserLanguage() : before(::uselocale(messageLocale)) {}
    UserLanguage(const UserLanguage&) = delete;
    UserLanguage& operator=(const UserLanguage&) = delete;
    ~UserLanguage() { ::uselocale(before); }

private:
    locale_t before;
};

// Beside the program: in the build tree, or where it is installed.
std::filesystem::path catalogueFolder() {
    std::error_code failed;
    const auto prefix = std::filesystem::read_symlink("/proc/self/exe", failed).parent_path().parent_path();
    const auto built = prefix / "locale";
    return std::filesystem::exists(built, failed) ? built : prefix / "share" / "locale";
}

std::string grouped(std::uint64_t number) {
    constexpr std::size_t groupSize = 3;
    std::string digits = std::to_string(number);
    if (digits.size() <= groupSize) return digits;
    // TRANSLATORS: Separates groups of three digits.
    const std::string separator = translate(",");
    for (auto place = digits.size(); place > groupSize;) {
        place -= groupSize;
        digits.insert(place, separator);
    }
    return digits;
}

// %n and %1 to %9 stand for these. Another "%" stands for itself.
std::string filled(std::string_view text, std::initializer_list<std::string> values, const std::string& number) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char next = text[at] == '%' && at + 1 < text.size() ? text[at + 1] : '\0';
        const auto place = static_cast<std::size_t>(next - '1');
        if (next == 'n' && !number.empty()) {
            result += number;
            ++at;
        } else if (next >= '1' && place < values.size()) {
            result += values.begin()[place];
            ++at;
        } else {
            result += text[at];
        }
    }
    return result;
}

} // namespace

void startTranslation() {
    messageLocale = ::newlocale(LC_MESSAGES_MASK, "", nullptr);
    ::bindtextdomain(catalogue, catalogueFolder().c_str());
    ::bind_textdomain_codeset(catalogue, "UTF-8");
}

bool translates() { return messageLocale != nullptr; }

std::string translate(const char* text, std::initializer_list<std::string> values) {
    if (messageLocale == nullptr || *text == '\0') return filled(text, values, "");
    const UserLanguage language;
    return filled(::dgettext(catalogue, text), values, "");
}

std::string translatePlural(
    const char* one, const char* many, std::uint64_t number, std::initializer_list<std::string> values) {
    const std::string digits = grouped(number);
    if (messageLocale == nullptr) return filled(number == 1 ? one : many, values, digits);
    const UserLanguage language;
    return filled(::dngettext(catalogue, one, many, number), values, digits);
}

} // namespace zembrastel

#include "language/translation.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
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

std::string_view environmentValue(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

std::string_view messageLocaleName() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES"}) {
        if (const auto value = environmentValue(name); !value.empty()) return value;
    }
    return environmentValue("LANG");
}

// Whether it needs no catalogue: English, or no language at all.
bool isEnglish(std::string_view locale) {
    const auto language = locale.substr(0, locale.find_first_of("_.@"));
    return language.empty() || language == "en" || language == "C" || language == "POSIX";
}

// The user's languages before English, which has no catalogue: gettext would go on to the language after it. `wanted`
// is a list with colons that takes the place of the locale's language, unless the locale is "C".
std::string languagesWithCatalogue(std::string_view locale, std::string_view wanted) {
    if (locale.empty() || locale == "C" || locale == "POSIX") return {};
    std::string languages;
    for (std::string_view rest = wanted.empty() ? locale : wanted; !isEnglish(rest.substr(0, rest.find(':')));) {
        const auto language = rest.substr(0, rest.find(':'));
        languages.append(languages.empty() ? "" : ":").append(language);
        rest.remove_prefix(std::min(rest.size(), language.size() + 1));
    }
    return languages;
}

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
    const std::string languages = languagesWithCatalogue(messageLocaleName(), environmentValue("LANGUAGE"));
    if (languages.empty()) return;
    // gettext reads the variable itself. It refuses the locale "C" alone, so no other locale need be installed.
    ::setenv("LANGUAGE", languages.c_str(), 1);
    messageLocale = ::newlocale(LC_MESSAGES_MASK, "C.UTF-8", nullptr);
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

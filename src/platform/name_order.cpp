#include "platform/name_order.h"

#include "platform/text.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>

namespace zembrastel {
namespace {

void require(UErrorCode status, const char* what) {
    if (U_FAILURE(status) != 0) throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

std::unique_ptr<const icu::Collator> makeNameOrder() {
    // The POSIX locale is no language: it would sort all capitals before all small letters.
    const icu::Locale& user = icu::Locale::getDefault();
    const bool noLanguage = std::string_view(user.getVariant()) == "POSIX";
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> order(
        icu::Collator::createInstance(noLanguage ? icu::Locale::getRoot() : user, status));
    require(status, "No order of names");
    order->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    order->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
    require(status, "No file-manager order of names");
    return order;
}

const icu::Collator& nameOrder() {
    static const std::unique_ptr<const icu::Collator> order = makeNameOrder();
    return *order;
}

icu::StringPiece piece(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX))};
}

} // namespace

std::string foldedName(std::string_view name) {
    const auto beyondAscii = [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; };
    if (std::ranges::none_of(name, beyondAscii)) return asciiLowercase(name);
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* form = icu::Normalizer2::getNFCInstance(status);
    require(status, "No normalization of names");
    // Folding can leave text that is not normalized.
    icu::UnicodeString text = form->normalize(icu::UnicodeString::fromUTF8(piece(name)), status);
    text = form->normalize(text.foldCase(), status);
    require(status, "Names cannot be normalized");
    std::string folded;
    text.toUTF8String(folded);
    return folded;
}

int compareNames(std::string_view a, std::string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult result = nameOrder().compareUTF8(piece(a), piece(b), status);
    require(status, "Names cannot be compared");
    return result;
}

std::string nameSortKey(std::string_view name) {
    constexpr std::size_t usualSize = 64;
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(piece(name));
    std::string key(usualSize, '\0');
    const auto write = [&] {
        auto* bytes = reinterpret_cast<std::uint8_t*>(key.data());
        return static_cast<std::size_t>(nameOrder().getSortKey(text, bytes, static_cast<std::int32_t>(key.size())));
    };
    const std::size_t size = write();
    const bool fits = size <= key.size();
    key.resize(size);
    if (!fits) write();
    return key;
}

} // namespace zembrastel

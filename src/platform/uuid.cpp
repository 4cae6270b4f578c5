#include "platform/uuid.h"

#include <uuid/uuid.h>

namespace zembrastel {

Uuid Uuid::random() {
    Uuid id;
    uuid_generate_random(id.bytes.data());
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    Uuid id;
    if (text.size() != UUID_STR_LEN - 1) return std::nullopt;
    if (uuid_parse_range(text.data(), text.data() + text.size(), id.bytes.data()) != 0) return std::nullopt;
    return id;
}

std::string Uuid::text() const {
    std::array<char, UUID_STR_LEN> buffer{};
    uuid_unparse_upper(bytes.data(), buffer.data());
    return {buffer.data(), UUID_STR_LEN - 1};
}

} // namespace zembrastel

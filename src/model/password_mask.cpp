#include "model/password_mask.h"

namespace zembrastel {

std::string withoutPassword(std::string text, std::string_view password) {
    constexpr std::string_view dots = "••••";
    if (password.empty()) return text;
    for (auto at = text.find(password); at != std::string::npos; at = text.find(password, at + dots.size())) {
        text.replace(at, password.size(), dots);
    }
    return text;
}

} // namespace zembrastel

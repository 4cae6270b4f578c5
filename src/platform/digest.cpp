#include "platform/digest.h"

#include <glib.h>
#include <memory>

namespace zembrastel {

std::string sha256(std::string_view text) {
    const std::unique_ptr<gchar, decltype(&g_free)> digits(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(text.data()), text.size()),
        g_free);
    return digits.get();
}

} // namespace zembrastel

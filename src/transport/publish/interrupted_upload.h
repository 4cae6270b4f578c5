// Finds out how much of an interrupted upload the server has, and whether that is the beginning of the file.
//
// The size alone proves nothing: bytes of the broken connection may arrive after the size was requested. So unconfirmed
// bytes are fetched and compared.
//
// Used on one thread, for one file. Borrows all its arguments.
#pragma once

#include "platform/private_folder.h"
#include "transport/curl/dialogue.h"
#include "transport/publish/publish_item.h"

#include <cstdint>
#include <optional>

namespace zembrastel {

class InterruptedUpload {
public:
    InterruptedUpload(const FTPTransport& used, const Item& upload, int stagedCopy, const PrivateFolder& folder);

    // The number of bytes on the server that are those of the file. Nullopt if it has other bytes or does not answer,
    // and if a conversation broke off, which is then `broken`. Throws Cancelled and the system's errors.
    [[nodiscard]] std::optional<std::uint64_t> confirm();

    std::optional<Dialogue> broken;

private:
    [[nodiscard]] std::optional<std::uint64_t> sizeOnServer();
    [[nodiscard]] bool isOurs(std::uint64_t size);
    void run(Dialogue dialogue, std::vector<int> files);

    const FTPTransport& transport;
    const Item& item;
    const int copy;
    const PrivateFolder& staging;
};

} // namespace zembrastel

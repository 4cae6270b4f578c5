// How much of an upload that broke off the server has, and whether that is the beginning of the file.
//
// The size alone proves nothing: bytes of the broken connection may still have been on their way when a later one asked
// for it. So what is not confirmed is fetched and compared.
//
// Used on one thread, for one file. It borrows all that it is given.
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

    // The number of bytes that the server has and that are the file's. Nullopt where it has others, or does not say;
    // and where a conversation broke off, which is then `broken`. Throws Cancelled and the system's errors.
    [[nodiscard]] std::optional<std::uint64_t> confirm();

    std::optional<Dialogue> broken;

private:
    [[nodiscard]] std::optional<std::uint64_t> sizeOnServer();
    [[nodiscard]] bool isOurs(std::uint64_t size);
    void hold(Dialogue dialogue, std::vector<int> files);

    const FTPTransport& transport;
    const Item& item;
    const int copy;
    const PrivateFolder& staging;
};

} // namespace zembrastel

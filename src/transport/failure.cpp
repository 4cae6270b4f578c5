#include "transport/failure.h"

namespace zembrastel {

Failure failureOf(const std::exception& error) {
    Failure failure{.message = describe(error)};
    if (const auto* transfer = dynamic_cast<const TransferError*>(&error);
        transfer != nullptr && transfer->code != CurlCode::ok) {
        failure.kind = Failure::Kind::transfer;
        failure.code = transfer->code;
        failure.reply = transfer->reply;
    }
    return failure;
}

} // namespace zembrastel

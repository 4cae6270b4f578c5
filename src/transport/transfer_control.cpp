#include "transport/transfer_control.h"

#include "model/error.h"
#include "platform/child_process.h"

namespace zembrastel {

void TransferControl::launch(ChildProcess& child, AtStop atStop) {
    const std::lock_guard guard(lock);
    if (stopped) throw Cancelled();
    child.start();
    if (atStop == AtStop::ends) process = &child;
}

void TransferControl::check() const {
    if (isStopped()) throw Cancelled();
}

bool TransferControl::isStopped() const {
    const std::lock_guard guard(lock);
    return stopped;
}

void TransferControl::cancel() {
    const std::lock_guard guard(lock);
    stopped = true;
    if (process != nullptr) process->terminate();
}

void TransferControl::change(ChildProcess& child, AtStop atStop) {
    const std::lock_guard guard(lock);
    if (stopped) throw Cancelled();
    process = atStop == AtStop::ends ? &child : nullptr;
}

void TransferControl::clear() {
    const std::lock_guard guard(lock);
    process = nullptr;
}

} // namespace zembrastel

#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "transport/curl/dialogue.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/transfer_observer.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zembrastel {
namespace {

// In one conversation. Results are kept when it has ended, and the fetched files need room until then.
constexpr std::size_t maxAtOnce = 64;
constexpr std::int64_t maxBytesAtOnce = std::int64_t{32} << 20;

using FileToCompare = FTPTransport::FileToCompare;

std::string nameOf(std::size_t number) { return "fetched" + std::to_string(number); }

// At least one file.
std::span<const FileToCompare> firstFiles(std::span<const FileToCompare> files) {
    std::size_t count = 0;
    std::int64_t bytes = 0;
    while (count < std::min(files.size(), maxAtOnce)) {
        bytes += files[count].fingerprint.size;
        if (count > 0 && bytes > maxBytesAtOnce) break;
        ++count;
    }
    return files.first(count);
}

std::size_t readPiece(int file, std::uint64_t from, std::span<char> to, const std::filesystem::path& name) {
    std::size_t length = 0;
    while (length < to.size()) {
        const auto size = ::pread(file, to.data() + length, to.size() - length, static_cast<off_t>(from + length));
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throwFileError("read", name);
        if (size == 0) break;
        length += static_cast<std::size_t>(size);
    }
    return length;
}

// The hash of the bytes of both files; nullopt if they differ. Piece by piece: the files may be larger than the memory.
std::optional<ContentHash> hashIfSame(
    int a, const std::filesystem::path& nameOfA, int b, const std::filesystem::path& nameOfB) {
    constexpr std::size_t piece = std::size_t{256} << 10;
    std::vector<char> ofA(piece);
    std::vector<char> ofB(piece);
    ContentHasher hasher;
    for (std::uint64_t from = 0;; from += piece) {
        const auto length = readPiece(a, from, ofA, nameOfA);
        if (readPiece(b, from, ofB, nameOfB) != length) return std::nullopt;
        if (!std::equal(ofA.begin(), ofA.begin() + static_cast<std::ptrdiff_t>(length), ofB.begin())) {
            return std::nullopt;
        }
        hasher.add({ofA.data(), length});
        if (length < piece) return hasher.hash();
    }
}

// The first files, as many as one conversation may fetch.
class Batch {
public:
    // Adds the files that the server refuses to `refusedPaths`; without it they count as different.
    Batch(const FTPTransport& used, std::span<const FileToCompare> chosen, std::vector<std::string>* refusedPaths)
        : transport(used), dialogue(used, used.traits->login()), files(chosen), refused(refusedPaths) {
        if (dialogue.login == ServerTraits::Login::oneTransfer) files = files.first(1);
    }

    // Compares the first of the files and returns how many.
    std::size_t run(const FTPTransport::Compared& result, Persistence& persistence) {
        std::vector<int> given;
        std::uint64_t longest = 1;
        for (std::size_t number = 0; number < files.size(); ++number) {
            fetched.push_back(folder.folder().create(nameOf(number), S_IRUSR | S_IWUSR));
            given.push_back(fetched.back().get());
            longest = std::max(longest, static_cast<std::uint64_t>(files[number].fingerprint.size));
            dialogue.add(
                {.path = files[number].path, .options = {{"output", ChildProcess::filePathOf(number)}}},
                [this, &result, number](const BlockOutcome& outcome) {
                    if (isRefused(number, outcome)) return;
                    showProgress(number);
                    result(files[number], outcome.succeeded() ? hashIfEqual(number) : std::nullopt);
                    (void)!::ftruncate(fetched[number].get(), 0); // its room is needed for the next files
                    ++compared;
                },
                [this, number] {
                    if (transport.observer == nullptr) return;
                    transport.observer->fileBegins(
                        files[number].path, static_cast<std::uint64_t>(files[number].fingerprint.size));
                });
        }
        std::function<void(const ChildProcess&)> look;
        if (transport.observer != nullptr) look = [this](const ChildProcess&) { showProgress(compared); };
        dialogue.run(std::move(given), look, longest);
        if (dialogue.broken && dialogue.broken->code == CurlCode::writeFailed) checkRoom();
        if (dialogue.broken) persistence.brokeOff(dialogue, compared > 0);
        return compared;
    }

private:
    [[nodiscard]] bool isRefused(std::size_t number, const BlockOutcome& outcome) {
        if (outcome.succeeded() || refused == nullptr) return false;
        refused->push_back(files[number].path);
        ++compared;
        return true;
    }

    // Throws if the present file could not be written for a reason of this machine.
    void checkRoom() const {
        const auto why = compared < fetched.size() ? whyNotWritten(fetched[compared].get()) : "";
        if (why.empty()) return;
        throw SyncError(
            "There is no room to compare " + printable(files[compared].path) + ": a copy of it in "
            + printable(folder.path().parent_path().string()) + " could not be written (" + why
            + "). Free some space there, or start Zembrastel with TMPDIR set to a folder with more.");
    }

    void showProgress(std::size_t number) const {
        struct stat attributes {};
        if (transport.observer == nullptr || number >= fetched.size()) return;
        if (::fstat(fetched[number].get(), &attributes) != 0) return;
        transport.observer->fileMoved(static_cast<std::uint64_t>(attributes.st_size));
    }

    [[nodiscard]] std::optional<ContentHash> hashIfEqual(std::size_t number) const {
        const auto& [path, fingerprint] = files[number];
        const auto place = LocalPlace::resolve(transport.profile.localFolder, path);
        if (place.fingerprint() != fingerprint) return std::nullopt;
        const Descriptor here = place.parent->openForReading(place.name);
        const auto hash = hashIfSame(here.get(), place.url, fetched[number].get(), folder.path() / nameOf(number));
        return place.fingerprint() == fingerprint ? hash : std::nullopt;
    }

    const FTPTransport& transport;
    Dialogue dialogue;
    std::span<const FileToCompare> files;
    const PrivateFolder folder;
    std::vector<Descriptor> fetched;
    std::size_t compared = 0;
    std::vector<std::string>* refused;
};

void throwIfRefused(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    const auto more = paths.size() - 1;
    throw SyncError(
        "The server does not send " + printable(paths.front())
        + (more == 0 ? "" : " and " + std::to_string(more) + " more")
        + ", so the contents cannot be compared. Let your user name read them there, or choose without comparing "
          "them.");
}

} // namespace

ContentHashes FTPTransport::filesWithEqualContents(
    const std::vector<FileToCompare>& files, const Compared& compared) const {
    ContentHashes equal;
    std::span<const FileToCompare> left(files);
    Persistence persistence(*traits);
    std::vector<std::string> refused;
    const Compared result = [&](const FileToCompare& file, const std::optional<ContentHash>& hash) {
        if (hash) equal.emplace(file.path, *hash);
        if (compared) compared(file, hash);
    };
    while (!left.empty()) {
        control->check();
        left = left.subspan(Batch(*this, firstFiles(left), compared ? &refused : nullptr).run(result, persistence));
    }
    throwIfRefused(refused);
    return equal;
}

} // namespace zembrastel

// Removes the temporary files that earlier uploads left on the server, by exact name.
#pragma once

namespace zembrastel {

class Dialogue;
struct FTPTransport;

// Adds a block for each folder with such files. What is removed is forgotten; the rest is tried again.
void addRemovals(Dialogue& dialogue, const FTPTransport& transport);

// The same in a conversation of its own. Files that stay on the server are tried again later; throws Cancelled.
void removeLeftovers(const FTPTransport& transport);

} // namespace zembrastel

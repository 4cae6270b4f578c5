// The subjects of measurement, each a command of its own, so that a sample is one process with a fresh heap.
#pragma once

namespace CLI {
class App;
}

namespace zembrastel::bench {

void addTree(CLI::App& parent);
void addState(CLI::App& parent);
void addPasswords(CLI::App& parent);
void addScan(CLI::App& parent);
void addPoll(CLI::App& parent);
void addSave(CLI::App& parent);
void addLoad(CLI::App& parent);
void addUpload(CLI::App& parent);
void addCheck(CLI::App& parent);
void addDownload(CLI::App& parent);
void addBareUploads(CLI::App& parent);
void addBareListings(CLI::App& parent);
void addStage(CLI::App& parent);
void addParse(CLI::App& parent);
void addTime(CLI::App& parent);

} // namespace zembrastel::bench

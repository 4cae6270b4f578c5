// Gives every target each file of its corpus once: corpus_test FOLDER. A target without a corpus fails.
#include "platform/files.h"
#include "targets.h"

#include <cstdio>

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: corpus_test FOLDER\n");
        return 2;
    }
    for (const auto& target : zembrastel::fuzz::allTargets) {
        int inputs = 0;
        const auto folder = std::filesystem::path(arguments[1]) / target.name;
        for (const auto& file : std::filesystem::directory_iterator(folder)) {
            std::printf("%s\n", file.path().c_str()); // the last one named is the one that fails
            std::fflush(stdout);
            target.run(zembrastel::readFile(file.path()).value());
            ++inputs;
        }
        if (inputs == 0) {
            std::fprintf(stderr, "%s is empty\n", folder.c_str());
            return 1;
        }
    }
    return 0;
}

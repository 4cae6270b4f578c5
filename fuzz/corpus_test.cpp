// Gives every target each file of its corpus, and then mixtures of their pieces, the same in every run: corpus_test
// FOLDER. A target without a corpus fails.
#include "platform/files.h"
#include "targets.h"

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr int mixtures = 10'000;

std::string mixed(const std::vector<std::string>& inputs, std::mt19937_64& random) {
    std::string mixture;
    for (auto pieces = 1 + random() % 4; pieces > 0; --pieces) {
        const std::string& input = inputs[random() % inputs.size()];
        const auto begin = random() % (input.size() + 1);
        constexpr std::size_t longest = 60;
        mixture += random() % 3 == 0 ? input.substr(0, 4 * longest) : input.substr(begin, random() % longest);
        if (!mixture.empty() && random() % 2 == 0) mixture[random() % mixture.size()] = mixture.front();
    }
    return mixture;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: corpus_test FOLDER\n");
        return 2;
    }
    for (const auto& target : zembrastel::fuzz::allTargets) {
        std::vector<std::string> inputs;
        std::mt19937_64 random(20240229);
        const auto folder = std::filesystem::path(arguments[1]) / target.name;
        for (const auto& file : std::filesystem::directory_iterator(folder)) {
            std::printf("%s\n", file.path().c_str()); // the last one named is the one that fails
            std::fflush(stdout);
            inputs.push_back(zembrastel::readFile(file.path()).value());
            target.run(inputs.back());
        }
        if (inputs.empty()) {
            std::fprintf(stderr, "%s is empty\n", folder.c_str());
            return 1;
        }
        std::ranges::sort(inputs); // whatever the order in the folder
        for (int i = 0; i < mixtures; ++i) target.run(mixed(inputs, random));
    }
    return 0;
}

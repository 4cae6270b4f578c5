// Listings to entries, beside what splitting the same text and storing a name for each line takes.
#include "measure.h"
#include "subjects.h"
#include "transport/listing/listing_parsers.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <stdexcept>
#include <string>

namespace zembrastel::bench {
namespace {

std::string name(std::size_t index) {
    constexpr std::size_t digits = 6;
    const std::string number = std::to_string(index);
    return "photograph-" + std::string(digits - std::min(digits, number.size()), '0') + number + ".jpeg";
}

std::string mlsdLine(std::size_t index) {
    return "modify=20240131123456;perm=adfrw;size=" + std::to_string(index) + ";type=file;unique=801U"
           + std::to_string(index) + ";UNIX.group=0;UNIX.mode=0644;UNIX.owner=0; " + name(index) + '\n';
}

std::string listLine(std::size_t index) {
    const std::string size = std::to_string(index);
    return "-rw-r--r--   1 web      web      " + std::string(8 - size.size(), ' ') + size + " Jan 31 12:34 "
           + name(index) + '\n';
}

std::vector<std::string> splitAndStore(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        const auto end = text.find('\n');
        const auto line = text.substr(0, end);
        names.emplace_back(line.substr(line.rfind(' ') + 1));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return names;
}

template <class Work>
double timed(const Work& work, std::size_t expected) {
    const double begin = threadTime();
    const auto found = work();
    const double took = threadTime() - begin;
    if (found.size() != expected) throw std::runtime_error("not every line was understood");
    return took;
}

struct Options {
    bool mlsd = false;
    std::size_t count = 0;
    std::size_t rounds = 1;
};

void measure(const Options& options) {
    std::string text;
    for (std::size_t i = 0; i < options.count; ++i) text += options.mlsd ? mlsdLine(i) : listLine(i);
    const auto parse = options.mlsd ? parseMLSD : parseLIST;
    std::vector<double> parsing;
    std::vector<double> splitting;
    for (std::size_t i = 0; i < options.rounds; ++i) {
        parsing.push_back(timed([&] { return parse(text); }, options.count));
        splitting.push_back(timed([&] { return splitAndStore(text); }, options.count));
    }
    Figures().set("own", parsing).set("referenceOwn", splitting).print();
}

} // namespace

void addParse(CLI::App& parent) {
    auto* const command = parent.add_subcommand("parse", "Reading a LIST, and splitting its lines, in turn");
    const auto options = std::make_shared<Options>();
    command->add_flag("--mlsd", options->mlsd, "An MLSD instead");
    command->add_option("--count", options->count, "Lines, at most ten million")->required();
    command->add_option("--rounds", options->rounds);
    command->callback([options] { measure(*options); });
}

} // namespace zembrastel::bench

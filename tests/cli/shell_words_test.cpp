#include "cli/text/shell_words.h"

#include "support/program.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {

using namespace cli;

namespace {

// What a real shell makes of the text: its words, each on lines of their own.
std::string wordsOfShell(const std::string& text) {
    return runProgram({"/bin/sh", "-c", "for word in " + text + "\ndo printf '<%s>\\n' \"$word\"; done"}).output;
}

std::string wordsOf(const std::string& text) {
    const auto words = splitWords(text);
    std::string lines = words ? "" : "unfinished";
    for (const auto& word : words.value_or(std::vector<std::string>())) lines += "<" + word + ">\n";
    return lines;
}

TEST(ShellWords, PasswordCommandGetsItsArgumentsAsInAShell) {
    for (const std::string text :
         {"", " \t\n", "  secret-tool   lookup\tname 'My website' ", R"("a b"'c d'e\ f)", R"('' "" x)",
          R"("say \"hi\" \\ \$5 \`x\` \n \a")", R"('no \escape "here"')", R"(a\'b\"c\\d)", R"("it's")", "\\a\\ \\\tb",
          "\"two\\\nlines\" one\\\nword", "'line\nfeed'", R"(caf\é "ü" 'ß')", R"(x"")", R"(--opt="a b")"}) {
        EXPECT_EQ(wordsOf(text), wordsOfShell(text)) << text;
    }
    const auto forAShellAlone = "echo $HOME `id` $(id) | tee > x; a && *\nb";
    EXPECT_EQ(
        splitWords(forAShellAlone),
        (std::vector<std::string>{"echo", "$HOME", "`id`", "$(id)", "|", "tee", ">", "x;", "a", "&&", "*", "b"}));
    for (const auto* unfinished : {"'", "a 'b", "\"", "a \"b\\\"", "\\", "a\\"}) {
        EXPECT_FALSE(splitWords(unfinished)) << unfinished;
    }
}

TEST(ShellWords, PrintedCommandNamesTheSameProfile) {
    for (const std::string word :
         {"plain", "My website", "it's", "", "$HOME", "a\"b\\c", "*", "~/x", "line\nfeed", "-x=1", "été", "a;b"}) {
        EXPECT_EQ(wordsOfShell(shellQuoted(word)), "<" + word + ">\n");
    }
    EXPECT_EQ(shellQuoted("/srv/web-1_a.b"), "/srv/web-1_a.b");
}

} // namespace
} // namespace zembrastel::testing

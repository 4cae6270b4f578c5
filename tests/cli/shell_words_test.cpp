#include "cli/shell_words.h"

#include "support/program.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

// What a real shell makes of the text: its words, each on lines of their own.
std::string wordsOfShell(const std::string& text) {
    return runProgram({"/bin/sh", "-c", "for word in " + text + "\ndo printf '<%s>\\n' \"$word\"; done"}).output;
}

std::string wordsOf(const std::string& text) {
    const auto words = splitWords(text);
    if (!words) return "unfinished";
    std::string lines;
    for (const auto& word : *words) lines += "<" + word + ">\n";
    return lines;
}

TEST(ShellWords, PasswordCommandGetsTheArgumentsThatAShellWouldGiveIt) {
    for (const std::string text :
         {R"(pass show ftp/web)", R"(  secret-tool   lookup	name 'My website' )", R"("a b"'c d'e\ f)", R"('' "" x)",
          R"("say \"hi\" \\ \$5 \`x\` \n \a")", R"('no \escape "here"')", R"(a\'b\"c\\d)", R"("it's")",
          R"(\a\ \	b)", "\"two\\\nlines\" one\\\nword", "'line\nfeed'", R"(caf\é "ü" 'ß')", R"(x"")",
          R"(--opt="a b")"}) {
        EXPECT_EQ(wordsOf(text), wordsOfShell(text)) << text;
    }
    EXPECT_EQ(wordsOf(""), "");
    EXPECT_EQ(wordsOf(" \t\n"), "");
}

TEST(ShellWords, WhatOnlyAShellWouldActOnStaysText) {
    EXPECT_EQ(
        wordsOf("echo $HOME `id` $(id) | tee > x; a && *"),
        "<echo>\n<$HOME>\n<`id`>\n<$(id)>\n<|>\n<tee>\n<>>\n<x;>\n<a>\n<&&>\n<*>\n");
}

TEST(ShellWords, UnfinishedQuotationIsNotGuessedAt) {
    for (const std::string text : {"'", "a 'b", "\"", "a \"b\\\"", "\\", "a\\"}) {
        EXPECT_FALSE(splitWords(text).has_value()) << text;
    }
}

TEST(ShellWords, CommandToTypeNamesTheSameProfileInAShell) {
    for (const std::string word :
         {"plain", "My website", "it's", "", "$HOME", "a\"b\\c", "*", "~/x", "line\nfeed", "-x=1", "été", "'", "a;b"}) {
        EXPECT_EQ(splitWords(shellQuoted(word)), std::vector{word}) << word;
        EXPECT_EQ(wordsOfShell(shellQuoted(word)), "<" + word + ">\n");
    }
    EXPECT_EQ(shellQuoted("/srv/web-1_a.b"), "/srv/web-1_a.b");
}

} // namespace
} // namespace zembrastel::testing

#include "desktop/startArguments.h"

#include <gtest/gtest.h>

#include <vector>

namespace qrel {
namespace {

TEST(StartArguments, WhatTheProgramDoesNotKnowIsLeftToTheCommandLine) {
  const struct {
    std::vector<const char*> given;
    const char *theme, *commandLine;
    bool help, version;
  } cases[] = {{{}, "", "", false, false},
               {{"/RunSavedComp", "12"}, "", "/RunSavedComp 12", false, false},
               {{"/RunSavedComp", "-5"}, "", "/RunSavedComp -5", false, false},
               {{"--theme", "dark", "/RunSavedComp 7"}, "dark", "/RunSavedComp 7", false, false},
               {{"--theme=light", "--no-such-thing", "-x"}, "light", "--no-such-thing -x", false, false},
               {{"a.sql", "--theme"}, "", "a.sql", false, false},
               {{"--help"}, "", "", true, false},
               {{"-v", "/Other"}, "", "/Other", false, true}};
  for (const auto& each : cases) {
    std::vector<const char*> arguments{"quorrel"};
    arguments.insert(arguments.end(), each.given.begin(), each.given.end());
    const StartArguments read = readStartArguments(static_cast<int>(arguments.size()), arguments.data());
    EXPECT_EQ(read.theme, each.theme);
    EXPECT_EQ(read.commandLine, each.commandLine);
    EXPECT_EQ(read.help, each.help) << each.commandLine;
    EXPECT_EQ(read.version, each.version) << each.commandLine;
  }
}

TEST(StartArguments, AThemeThatThereIsNotIsRefused) {
  const auto whyNot = [](const char* theme) { return whyNotStart({false, false, theme, ""}); };
  for (const char* theme : {"", "light", "dark"}) EXPECT_EQ(whyNot(theme), "") << theme;
  EXPECT_EQ(whyNot("purple"), "There is no theme \"purple\". Use --theme light or --theme dark, or leave it out.");
}

}  // namespace
}  // namespace qrel

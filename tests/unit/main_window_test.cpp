#include "windows/main_window.h"

#include <gtest/gtest.h>

TEST(MainWindowTitle, AcceptsItsOwnTitle) {
    EXPECT_STREQ(kMainWindowTitle, "Varnelle (Plus Version 1.0.1)");
    EXPECT_TRUE(IsMainWindowTitle(kMainWindowTitle));
}

TEST(MainWindowTitle, AcceptsTitlesOfOtherVersions) {
    EXPECT_TRUE(IsMainWindowTitle("Varnelle (Lite Version 0.9)"));
    EXPECT_TRUE(IsMainWindowTitle("Varnelle ( Version "));
    EXPECT_TRUE(IsMainWindowTitle("Varnelle Desk (Grand Web Edition)"));
}

TEST(MainWindowTitle, RejectsOtherTitles) {
    for (const char* title :
         {"", "Varnelle", "Varnelle - Timeline Editor", "Varnelle (Plus version 1.0.1)",
          "varnelle (Plus Version 1.0.1)", " Varnelle (Plus Version 1.0.1)", "Varnelle(Plus Version 1.0.1)",
          "Varnelle Desk (Grand Web Edition) 2", "Notes on Varnelle (Plus Version 1.0.1)",
          "Varnelle (Plus Version", "Varnelle (Version 2.0)"}) {
        EXPECT_FALSE(IsMainWindowTitle(title)) << title;
    }
}

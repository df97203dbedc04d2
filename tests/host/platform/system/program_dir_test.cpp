// Where a program lives, by the path that it was started with.

#include "host/platform/system/program_dir.h"

#include <gtest/gtest.h>

namespace orvanel {

TEST(ProgramDir, is_found_from_whatever_the_program_was_called_by) {
    struct Case {
        const char *program, *present_folder, *found;
    };
    for (const auto& [program, present_folder, found] :
         {Case{"/opt/desk/orvanel42", "/home/me", "/opt/desk/"},
          Case{"\"/opt/my desk/orvanel42\" a.eep", "/home/me", "/opt/my desk/"},
          Case{"\"orvanel42", "/home/me", "/home/me/"}, Case{"orvanel42", "/home/me", "/home/me/"},
          Case{"orvanel42", "/", "/"}, Case{"./orvanel42", "/home/me/", "/home/me/"},
          Case{"bin/orvanel42", "/home/me", "/home/me/bin/"},
          Case{"../orvanel42", "/home/me", "/home/"},
          Case{"../../bin/orvanel42", "/home/me", "/bin/"},
          Case{"../../../../orvanel42", "/home/me", "/"}, Case{"", "/home/me", "/home/me/"}})
        EXPECT_EQ(find_program_dir(program, present_folder), found)
            << program << " from " << present_folder;
}

TEST(ProgramDir, what_is_installed_for_the_whole_system_lives_in_the_users_data_folder) {
    struct Case {
        const char* folder;
        bool writable;
        const char *data_home, *home, *chosen;
    };
    for (const auto& [folder, writable, data_home, home, chosen] :
         {Case{"/home/me/desk/", true, "/data", "/home/me", "/home/me/desk/"},
          Case{"/srv/desk/", false, "/data", "/home/me", "/data/orvanel42/"},
          Case{"/srv/desk/", false, "", "/home/me", "/home/me/.local/share/orvanel42/"},
          Case{"/srv/desk/", false, "data", "/home/me", "/home/me/.local/share/orvanel42/"},
          Case{"/usr/bin/", true, "", "/root", "/root/.local/share/orvanel42/"},
          Case{"/user/", true, "", "/root", "/user/"}, Case{"", true, "", "", ""},
          Case{"/srv/desk/", false, "", "", ""}})
        EXPECT_EQ(choose_program_dir(folder, writable, data_home, home), chosen) << folder;
}

}  // namespace orvanel

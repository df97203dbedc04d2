// The names of a kit as constants in C and Python.

#include "kit/constants.h"
#include "tests/kit/kit_support.h"

#include <gmock/gmock.h>

#include <string>

namespace orvanel {
namespace {

using testing::HasSubstr;
using testing::Not;

struct KitConstants : KitFolder {
    std::string python(const std::string& source) {
        const Built built = build(source);
        Faults faults;
        std::string text = python_of(built.kit, faults);
        for (const Fault& fault : faults)
            messages += std::to_string(fault.place.line) + ": " + fault.what() + "\n";
        return text;
    }
};

TEST_F(KitConstants, names_stand_by_their_kind_and_keys_by_their_labels) {
    put("dot.pbm", "P1 1 1 1");
    const std::string text = python(R"([constants]
far = 500
[picture 7 lamp]
file = dot.pbm
[picture 8]
file = dot.pbm
[touch macro 65 start]
#DL
[menu macro 3 english]
#DL
[power-on macro 0 boot]
text "before #AT"
#AT 0,0,50,20,66,67,"CGrüße, Rolf!"
ESC AK 0,20,50,40,68,0,"~CTwo|lines"
#AU 60,0,lamp,70,0,""
#AU 60,20,8,71,0,""
#AJ 60,40,lamp,72,0,"RNamed"
#AM 0,60,50,80,80,0,90,"ULanguage|Language|*/|Côté"
#AT 0,90,50,110,0,0,"Nothing"
)");
    ASSERT_EQ(messages, "");
    for (const char* line :
         {"FAR = 500\n", "PICTURE_LAMP = 7\n", "TOUCH_MACRO_START = 65\n",
          "MENU_MACRO_ENGLISH = 3\n", "POWER_ON_MACRO_BOOT = 0\n",
          "KEY_GRUESSE_ROLF = 66  # \"Grüße, Rolf!\"\n", "KEY_GRUESSE_ROLF_UP = 67",
          "KEY_TWO_LINES = 68", "KEY_LAMP = 70", "KEY_NAMED = 72", "KEY_ANGUAGE = 80",
          "ROW_LANGUAGE = 90", "ROW_COTE = 92"})
        EXPECT_THAT(text, HasSubstr(line));
    for (const char* none : {"71", "NOTHING", "= 91"})
        EXPECT_THAT(text, Not(HasSubstr(none)));
}

TEST_F(KitConstants, what_would_have_two_values_has_none) {
    const std::string text = python(R"([constants]
key_on = 5
[normal macro 0]
#AT 0,0,50,20,66,0,"COk"
#AT 60,0,90,20,66,0,"COk"
#AT 0,30,50,50,67,0,"CGo"
#AT 60,30,90,50,68,0,"CGo"
#AT 60,30,90,50,69,0,"COn"
)");
    EXPECT_EQ(messages, "");
    EXPECT_THAT(text, HasSubstr("KEY_ON = 5\n"));
    EXPECT_THAT(text, HasSubstr("KEY_OK = 66  # \"Ok\"\n"));
    EXPECT_THAT(text, Not(HasSubstr("KEY_GO =")));
    EXPECT_THAT(text, HasSubstr("# KEY_GO would be more than one code.\n"));
    EXPECT_THAT(text, Not(HasSubstr("69")));
}

TEST_F(KitConstants, names_that_differ_in_case_alone_are_a_fault) {
    python("[normal macro 0 page]\n#DL\n[normal macro 1 Page]\n#DL\n");
    EXPECT_EQ(messages, "3: two names become one constant, NORMAL_MACRO_PAGE, where case doesn't "
                        "count: rename one of them\n");
}

TEST_F(KitConstants, the_header_bears_the_name_of_its_file) {
    const Built built = build("[constants]\nlow = 1\n[normal macro 0]\n"
                              "#AT 0,0,50,20,66,0,\"CA*/B\"\n");
    Faults faults;
    EXPECT_EQ(header_of(built.kit, "dir/my-page.h", faults),
              "/* The names of k.kit, written by orvanel42-kit. */\n\n"
              "#ifndef ORVANEL42_KIT_MY_PAGE_H\n#define ORVANEL42_KIT_MY_PAGE_H\n\n"
              "/* Constants of the kit */\n#define MY_PAGE_LOW 1\n\n"
              "/* Codes of keys, by their labels */\n#define MY_PAGE_KEY_A_B 66 /* \"A* /B\" */\n\n"
              "#endif\n");
    EXPECT_THAT(header_of(built.kit, "42.h", faults), HasSubstr("#define KIT_42_LOW"));
}

}  // namespace
}  // namespace orvanel

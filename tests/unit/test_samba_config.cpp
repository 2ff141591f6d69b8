// Editing the agent's share section of the Samba configuration: one
// option set in place, its other spellings dropped, other sections kept.
#include <gtest/gtest.h>

#include "agent/live/samba_config.h"

using namespace nvagent;

namespace {

const char* const kConf =
    "[global]\n"
    "   workgroup = WORKGROUP\n"
    "\n"
    "[Norvane]\n"
    "   path = /srv/a\n"
    "   writable = yes\n"
    "; a comment\n"
    "[printers]\n"
    "   path = /var/spool\n";

TEST(SambaConfig, OptionReplacedInOurSectionOnly) {
    EXPECT_EQ(WithShareOption(kConf, "norvane", "path", "/srv/b", {}),
              "[global]\n"
              "   workgroup = WORKGROUP\n"
              "\n"
              "[Norvane]\n"
              "   path = /srv/b\n"
              "   writable = yes\n"
              "; a comment\n"
              "[printers]\n"
              "   path = /var/spool\n");
}

TEST(SambaConfig, EquivalentSpellingsAreDropped) {
    std::string out = WithShareOption(kConf, "norvane", "read only", "yes",
                                      {"writable", "writeable", "write ok"});
    EXPECT_EQ(out.find("writable"), std::string::npos);
    EXPECT_NE(out.find("   path = /srv/a\n   read only = yes\n"), std::string::npos) << out;
}

TEST(SambaConfig, MissingSectionIsAddedAtTheEnd) {
    EXPECT_EQ(WithShareOption("[global]\n   x = 1\n", "norvane", "path", "/srv", {}),
              "[global]\n   x = 1\n\n[norvane]\n   path = /srv\n");
    EXPECT_EQ(WithShareOption("[norvane]\n", "norvane", "path", "/srv", {}),
              "[norvane]\n   path = /srv\n");
}

}  // namespace

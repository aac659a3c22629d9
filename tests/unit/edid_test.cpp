// The stored EDIDs, checked by an independent decoder.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "TestCase/sic_video/HdmiEdid.h"

namespace {

/// Output of edid-decode for a port's image; empty if that program is not installed.
std::string Decoded(unsigned port) {
  std::string path = testing::TempDir() + "edid_XXXXXX";
  const int file = mkstemp(path.data());
  const ssize_t written = write(file, HdmiEdid(port), K2V_HDMI_EDID_BYTES);
  close(file);
  if (written != K2V_HDMI_EDID_BYTES) return "not written";

  std::string text;
  std::FILE* decoder = popen(("edid-decode --check " + path + " 2>/dev/null").c_str(), "r");
  for (int c = 0; (c = std::fgetc(decoder)) != EOF;) text.push_back(static_cast<char>(c));
  pclose(decoder);
  std::remove(path.c_str());
  return text;
}

TEST(Edid, IsValidForEveryPort) {
  static constexpr const char* kAddresses[] = {"3.0.0.0", "2.0.0.0", "1.0.0.0", "1.0.0.0"};
  for (unsigned port = 0; port < K2V_HDMI_PORT_COUNT; ++port) {
    const std::string decoded = Decoded(port);
    if (decoded.empty()) GTEST_SKIP() << "edid-decode is not installed";
    for (const std::string& part :
         {std::string("EDID Structure Version & Revision: 1.3"), std::string("160 cm x 90 cm"),
          std::string("First detailed timing is the preferred timing"),
          std::string("DTD 1:  3840x2160   60.000000 Hz"),
          std::string("DTD 2:  1920x1080   60.000000 Hz"), std::string("OUI 00-0C-03"),
          "Source physical address: " + std::string(kAddresses[port]),
          std::string("EDID conformity: PASS")}) {
      EXPECT_NE(decoded.find(part), std::string::npos) << "port " << port << ": no " << part;
    }
  }
}

}  // namespace

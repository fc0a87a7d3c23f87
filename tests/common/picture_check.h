#pragma once
// Reference pictures: what the driver sees, compared pixel for pixel with the stored
// PNG in tests/pictures/. On a difference the actual picture and a difference picture
// are written to pictures/ in the build tree and the test fails with the count of
// differing pixels and their bounding box. With MOTORDASH_UPDATE_PICTURES=1 in the
// environment (`make pictures`) the stored picture is rewritten instead.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

// `width` x `height` RGB565 pixels, rows `stride` pixels apart, against NAME.png.
::testing::AssertionResult MatchesPicture(const std::string& name, const uint16_t* pixels, uint32_t width,
                                          uint32_t height, uint32_t stride);

// Where the reference picture NAME is stored.
std::string ReferencePicturePath(const std::string& name);

// True while the stored pictures are being rewritten.
bool UpdatingPictures();
// True when MatchesPicture would store NAME rather than compare with it: while the
// pictures are being rewritten, the first time this run.
bool RewritingPicture(const std::string& name);

#include "files/PostError.h"

#include "platform/Alert.h"
#include "platform/Services.h"
#include "playback/CheckError.h"

namespace zemo {
namespace {

// Made when the program starts: where they are said there may be no memory to make them.
const std::string kTooLarge = "The sound is too large for this computer's memory.";
const std::string kCannotSave = "There is not enough memory to save the sound.";

} // namespace

void PostError(const std::string& message) {
    platform::services().alert->runCritical(kAlertTitle, message, "OK");
}

void postTooLarge() {
    PostError(kTooLarge);
}

void postNoMemoryToSave() {
    PostError(kCannotSave);
}

} // namespace zemo

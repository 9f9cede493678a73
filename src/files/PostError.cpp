#include "files/PostError.h"

#include "platform/Alert.h"
#include "platform/Services.h"
#include "playback/CheckError.h"

namespace zemo {

void PostError(const std::string& message) {
    platform::services().alert->runCritical(kAlertTitle, message, "OK");
}

void postTooLarge() {
    PostError("The sound is too large for this computer's memory.");
}

} // namespace zemo

#pragma once

#include <string>

namespace zemo {

/// [main] Shows `message` (UTF-8, plain text) in a critical alert; returns when it is dismissed.
void PostError(const std::string& message);

/// [main] What every reader says when there is no memory for a sound, and every writer when there
/// is none for a save. They need none themselves.
void postTooLarge();
void postNoMemoryToSave();

} // namespace zemo

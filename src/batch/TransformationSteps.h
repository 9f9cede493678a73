#pragma once

#include <optional>

#include "Words.h"
#include "batch/CommandLine.h"

/// [any] The words of the transformations. Nothing: words.complaint says what is wrong.
namespace zemo::batch {

std::optional<Step> parseResample(Words& words);
std::optional<Step> parseAm(Words& words);
std::optional<Step> parseSsbLower(Words& words);
std::optional<Step> parseSsbUpper(Words& words);
std::optional<Step> parseFm(Words& words);
std::optional<Step> parseHd(Words& words);

} // namespace zemo::batch

// Files that a person names for a command to write.
#pragma once

#include "support/result.h"

#include <string>

namespace tamarin {

// A command may write where nothing is, or over an older result of its own kind, which begins with
// start; a pipe or a device is always allowed, since it keeps nothing. Any other file was named by
// mistake: one slip of the completion key, and a strategy or a game would be gone. kind and option
// are for the message: "a page", "--html".
Status checkOutputPlace(const std::string& path, const std::string& start, const std::string& kind,
                        const std::string& option);

// Whether the folder is there that the file would lie in, and may be written to: said before long
// work rather than after it.
Status checkOutputFolder(const std::string& path);

} // namespace tamarin

// Undoes motion blur as the library does, but restores the brightness that its filter takes away.
#pragma once

#include "PackedPixels.h"
#include "Settings.h"

namespace cli {

/// Undoes motion of the set length in the direction `degree` by the library's own filter, scaled so that its gain at
/// frequency zero is 1: a flat picture stays as it is. Equal planes, as of greyscale, are filtered once. Works on
/// several planes at a time where the machine has processors and threads for it.
void UndoMotion(const Settings& settings, int degree, const PackedPixels& pixels);

} // namespace cli

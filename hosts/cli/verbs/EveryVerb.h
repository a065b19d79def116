// Each verb, made in the file named after it: its options, its checks, its memory and its work.
#pragma once

#include "Verb.h"

namespace cli {

Verb BlurVerb();
Verb MotionBlurVerb();
Verb DeBlurVerb();
Verb DeMotionBlurVerb();
Verb GuessMotionVerb();
Verb DenoiseVerb();
Verb BandVerb();
Verb SpectrumVerb();
Verb InfoVerb();

} // namespace cli

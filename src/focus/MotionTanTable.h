// The slopes of the direction guess.
#pragma once

namespace focus {

/// Given: tangents of 0 to 44 degrees to six places. Some last digits are off the true tangent; required as they stand,
/// since ties between degrees depend on them. MotionGuessTest pins the table.
inline constexpr float MotionTanTable[45] = {
    0.000000f, 0.017455f, 0.034921f, 0.052408f, 0.069927f, 0.087489f, 0.105104f, 0.122784f, 0.140541f,
    0.158384f, 0.176327f, 0.194380f, 0.212556f, 0.230868f, 0.249328f, 0.267949f, 0.286745f, 0.305730f,
    0.324919f, 0.344327f, 0.363970f, 0.383864f, 0.404026f, 0.424474f, 0.445228f, 0.466307f, 0.487732f,
    0.509525f, 0.531709f, 0.554308f, 0.577350f, 0.600860f, 0.624869f, 0.649407f, 0.674508f, 0.700207f,
    0.726542f, 0.753553f, 0.781285f, 0.809783f, 0.839099f, 0.869286f, 0.900403f, 0.932514f, 0.965688f};

} // namespace focus

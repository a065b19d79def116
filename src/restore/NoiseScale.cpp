#include "restore/NoiseScale.h"

#include <algorithm>
#include <cmath>

namespace restore {
namespace {

constexpr float kThird = 0.57735026918962576f; // 1 / sqrt(3)
constexpr float kHalf = 0.70710678118654752f;  // 1 / sqrt(2)
constexpr float kSixth = 0.40824829046386302f; // 1 / sqrt(6)
constexpr float kTwoSixths = 0.81649658092772603f;

} // namespace

LevelScale::LevelScale(const claribox::ChannelNoise& noise, double white, double leastVariance) {
    const double constant = std::max(noise.constant, leastVariance);
    // Less than a hundredth of difference from black to white is none.
    const bool isFlat = noise.proportional * white < 0.01 * constant;
    m_Gain = isFlat ? 0.0f : static_cast<float>(noise.proportional);
    m_Offset = static_cast<float>(constant + (isFlat ? noise.proportional * white / 2 : 0.0));
    m_Scale = std::sqrt(m_Offset);
}

float LevelScale::Forward(float level) const {
    if (m_Gain == 0.0f) {
        return level / m_Scale;
    }
    const float power = m_Gain * level + 0.375f * m_Gain * m_Gain + m_Offset;
    return 2.0f / m_Gain * std::sqrt(std::max(power, 0.0f));
}

float LevelScale::Backward(float scaled) const {
    if (m_Gain == 0.0f) {
        return scaled * m_Scale;
    }
    const float root = std::max(scaled, 0.0f);
    return 0.25f * m_Gain * root * root - m_Offset / m_Gain - 0.125f * m_Gain;
}

void ToOpponents(float* red, float* green, float* blue, int count) {
    for (int k = 0; k < count; ++k) {
        const float r = red[k];
        const float g = green[k];
        const float b = blue[k];
        red[k] = (r + g + b) * kThird;
        green[k] = (r - b) * kHalf;
        blue[k] = (r + b) * kSixth - g * kTwoSixths;
    }
}

void FromOpponents(float* first, float* second, float* third, int count) {
    for (int k = 0; k < count; ++k) {
        const float grey = first[k] * kThird;
        const float across = second[k] * kHalf;
        const float sixth = third[k] * kSixth;
        first[k] = grey + across + sixth;
        second[k] = grey - third[k] * kTwoSixths;
        third[k] = grey - across + sixth;
    }
}

} // namespace restore

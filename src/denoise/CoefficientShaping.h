// Shrinkage of coefficients on their way into the inverse transform.
#pragma once

namespace denoise {

struct ShrinkingRule {
    int width; ///< of the plane of coefficients
    int height;
    int type; ///< as CImageDenoiser::SetThresholdType has it
    float high;
    float middle; ///< thresholds
};

/// What `_filter_high` and then `_filter_middle` do to columns begin .. end - 1 of a row; values[0] is column `begin`.
void ShrinkHighAndMiddle(const ShrinkingRule& rule, int row, int begin, int end, float* values);

} // namespace denoise

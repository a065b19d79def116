#include <claribox/CImageDenoiser.h>

#include "Constants.h"

CImageDenoiser::CImageDenoiser() = default;
CImageDenoiser::CImageDenoiser(const CImageDenoiser& other) = default;
CImageDenoiser& CImageDenoiser::operator=(const CImageDenoiser& other) = default;
CImageDenoiser::~CImageDenoiser() = default;

void CImageDenoiser::SetSize(int width, int height) {
    m_Width = width;
    m_Height = height;
}

// The second argument works as a flag: it cannot set the second threshold to a value of its own. Required;
// DenoiserStateTest pins it.
void CImageDenoiser::SetThreshold(float first, float second) {
    m_Threshold = first;
    if (second == -1.0f) {
        m_ThresholdMiddle = first * denoise::kMiddleFactor;
    }
}

void CImageDenoiser::GetThreshold(float& first, float& second) const {
    first = m_Threshold;
    second = m_ThresholdMiddle;
}

void CImageDenoiser::SetThresholdType(int type) {
    m_ThresholdType = type;
}

void CImageDenoiser::SetAutoMeasure(bool on) {
    m_AutoMeasure = on;
}

bool CImageDenoiser::IsAuto() const {
    return m_AutoMeasure;
}

void CImageDenoiser::GetEstRect(int& left, int& top, int& right, int& bottom) const {
    left = m_EstLeft;
    top = m_EstTop;
    right = left + denoise::kEstSide;
    bottom = top + denoise::kEstSide;
}

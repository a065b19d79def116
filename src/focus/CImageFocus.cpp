#include <claribox/CImageFocus.h>

CImageFocus::CImageFocus() = default;
CImageFocus::CImageFocus(const CImageFocus& other) = default;
CImageFocus& CImageFocus::operator=(const CImageFocus& other) = default;
CImageFocus::~CImageFocus() = default;

void CImageFocus::SetSize(int width, int height) {
    m_Width = width;
    m_Height = height;
}

void CImageFocus::SetRadius(int radius) {
    m_Radius = radius;
}
int CImageFocus::GetRadius() const {
    return m_Radius;
}

void CImageFocus::SetNoiseFactor(float noiseFactor) {
    m_NoiseFactor = noiseFactor;
}
double CImageFocus::GetNoiseFactor() const {
    return static_cast<double>(m_NoiseFactor);
}

void CImageFocus::SetMotionLength(int length) {
    m_MotionLength = length;
}
int CImageFocus::GetMotionLength() const {
    return m_MotionLength;
}

void CImageFocus::SetMotionDegree(int degree) {
    m_MotionDegree = degree;
}
int CImageFocus::GetMotionDegree() const {
    return m_MotionDegree;
}

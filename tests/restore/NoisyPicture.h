// A picture of edges, gradients and texture, with noise, in any sample type.
#pragma once

#include <claribox/Restore.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

/// Levels go from 0 to 255 whatever the type.
class NoisyPicture {
public:
    NoisyPicture(int width, int height, int channels, claribox::SampleType type = claribox::SampleType::UInt8)
        : m_View{nullptr, width, height, channels, 0, type, claribox::ColourOrder::RGB} {
        m_View.rowBytes = (width * channels + 3) * Bytes(); // with padding
        m_Bytes.assign(static_cast<std::size_t>(m_View.rowBytes * height), 0xA5);
        m_View.pixels = m_Bytes.data();
    }
    NoisyPicture(const NoisyPicture& other) : m_View(other.m_View), m_Bytes(other.m_Bytes) {
        m_View.pixels = m_Bytes.data();
    }

    /// Noise of variance constant + proportional * level.
    void Fill(double constant, double proportional, std::uint32_t seed) {
        std::mt19937 generator(seed);
        std::normal_distribution<double> normal;
        for (int y = 0; y < m_View.height; ++y) {
            for (int x = 0; x < m_View.width; ++x) {
                for (int c = 0; c < m_View.channels; ++c) {
                    const double level = Level(x, y, c);
                    Set(x, y, c, level + normal(generator) * std::sqrt(constant + proportional * level));
                }
            }
        }
    }

    /// Without noise.
    static double Level(int x, int y, int channel) {
        const double slope = 60 + x / 4 % 120 + 10 * channel;
        return (x / 64 + y / 48) % 3 == 0 ? slope + 12 * std::sin(x * 0.9) * std::sin(y * 0.7) : slope;
    }

    double Get(int x, int y, int channel) const {
        const unsigned char* const at = Address(x, y, channel);
        if (m_View.type == claribox::SampleType::UInt8) {
            return *at;
        }
        if (m_View.type == claribox::SampleType::UInt16) {
            std::uint16_t sample;
            std::copy_n(at, 2, reinterpret_cast<unsigned char*>(&sample));
            return sample / 257.0;
        }
        float sample;
        std::copy_n(at, 4, reinterpret_cast<unsigned char*>(&sample));
        return static_cast<double>(sample) * 255.0;
    }

    /// The mean square of the difference from the levels without noise, over the colours.
    double Error() const {
        double sum = 0.0;
        const int colours = std::min(m_View.channels, 3);
        for (int y = 0; y < m_View.height; ++y) {
            for (int x = 0; x < m_View.width; ++x) {
                for (int c = 0; c < colours; ++c) {
                    sum += std::pow(Get(x, y, c) - Level(x, y, c), 2.0);
                }
            }
        }
        return sum / (static_cast<double>(m_View.width) * m_View.height * colours);
    }

    const claribox::PictureView& View() const { return m_View; }
    claribox::PictureView& View() { return m_View; }
    const std::vector<unsigned char>& Content() const { return m_Bytes; }

private:
    int Bytes() const {
        return m_View.type == claribox::SampleType::UInt8 ? 1 : m_View.type == claribox::SampleType::UInt16 ? 2 : 4;
    }
    unsigned char* Address(int x, int y, int channel) const {
        return static_cast<unsigned char*>(m_View.pixels) + y * m_View.rowBytes +
               (x * m_View.channels + channel) * Bytes();
    }
    void Set(int x, int y, int channel, double level) {
        const double limited = std::clamp(level, 0.0, 255.0);
        const auto store = [&](auto sample) {
            std::copy_n(reinterpret_cast<const unsigned char*>(&sample), sizeof sample, Address(x, y, channel));
        };
        switch (m_View.type) {
        case claribox::SampleType::UInt8:
            return store(static_cast<std::uint8_t>(std::lround(limited)));
        case claribox::SampleType::UInt16:
            return store(static_cast<std::uint16_t>(std::lround(limited * 257)));
        case claribox::SampleType::Float32:
            return store(static_cast<float>(level / 255.0));
        }
    }

    claribox::PictureView m_View;
    std::vector<unsigned char> m_Bytes;
};

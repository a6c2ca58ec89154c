#pragma once

#include <QPaintDevice>

namespace qb {

/// A device that fonts and lengths are measured for, whose resolution is the screen's times a
/// factor: all of a text grows, and its formats stay as they are.
class ZoomDevice : public QPaintDevice {
public:
    explicit ZoomDevice(const QPaintDevice& screen) : m_screen(screen) {}
    void SetZoom(double factor) { m_factor = factor; }
    QPaintEngine* paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmDpiX:
        case PdmPhysicalDpiX:
            return int(m_screen.logicalDpiX() * m_factor);
        case PdmDpiY:
        case PdmPhysicalDpiY:
            return int(m_screen.logicalDpiY() * m_factor);
        case PdmDevicePixelRatio:
            return int(m_screen.devicePixelRatioF());
        case PdmDevicePixelRatioScaled:
            return int(m_screen.devicePixelRatioF() * devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    const QPaintDevice& m_screen;
    double m_factor = 1;
};

} // namespace qb

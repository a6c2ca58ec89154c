#pragma once

#include <QPaintDevice>

namespace qb {

/// A device that fonts and lengths are measured for, whose resolution is the screen's times a
/// factor: all of a text grows, and its formats stay as they are.
class ZoomDevice : public QPaintDevice {
public:
    /// @p screen outlives it, and is asked anew for each measure.
    explicit ZoomDevice(const QPaintDevice& screen) : m_screen(screen) {}
    /// 1 is the size on the screen. What was laid out before stays so until it is laid out again.
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

#pragma once

namespace qb {

/// The size at which a picture is shown, in pixels: while its ratio is locked, one length follows the other.
class PictureSize {
public:
    static constexpr int Most = 10000;

    PictureSize() = default;
    /// Begins with the picture's own size.
    PictureSize(int width, int height);

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    bool IsLocked() const { return m_isLocked; }
    /// The height follows the width when it gets locked.
    void SetLocked(bool isLocked);
    void SetWidth(int width);
    void SetHeight(int height);

private:
    int m_ownWidth = 1;
    int m_ownHeight = 1;
    int m_width = 1;
    int m_height = 1;
    bool m_isLocked = true;
};

} // namespace qb

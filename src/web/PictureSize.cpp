#include "web/PictureSize.h"

#include <algorithm>
#include <cmath>

namespace qb {

namespace {

int Within(double length)
{
    return int(std::clamp(std::round(length), 1.0, double(PictureSize::Most)));
}

} // namespace

PictureSize::PictureSize(int width, int height)
    : m_ownWidth(Within(width)), m_ownHeight(Within(height)), m_width(m_ownWidth), m_height(m_ownHeight)
{
}

void PictureSize::SetLocked(bool isLocked)
{
    m_isLocked = isLocked;
    SetWidth(m_width);
}

void PictureSize::SetWidth(int width)
{
    m_width = Within(width);
    if (m_isLocked)
        m_height = Within(double(m_width) * m_ownHeight / m_ownWidth);
}

void PictureSize::SetHeight(int height)
{
    m_height = Within(height);
    if (m_isLocked)
        m_width = Within(double(m_height) * m_ownWidth / m_ownHeight);
}

} // namespace qb

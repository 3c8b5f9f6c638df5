#include "platform/Artwork.h"

#include "EmbeddedFiles.h"

#include <wx/image.h>
#include <wx/mstream.h>

#include <cmath>
#include <string_view>
#include <utility>

namespace orbisk::platform {

namespace {

wxBitmap decodedPicture(const std::string& name, const wxSize& size) {
    const std::string_view png =
        embeddedFile(name + "-" + std::to_string(size.x) + "x" + std::to_string(size.y) + ".png");
    if (png.empty())
        return {};
    wxMemoryInputStream stream(png.data(), png.size());
    const wxImage image(stream, wxBITMAP_TYPE_PNG);
    return image.IsOk() ? wxBitmap(image) : wxBitmap();
}

/// The toolkit paints a drawing each time a program starts, at a tenth of the whole start's cost.
class Drawing : public wxBitmapBundleImpl {
public:
    Drawing(std::string name, const wxSize& size) : m_name(std::move(name)), m_size(size) {}

    wxSize GetDefaultSize() const override { return m_size; }

    wxSize GetPreferredBitmapSizeAtScale(double scale) const override {
        return {static_cast<int>(std::lround(m_size.x * scale)),
                static_cast<int>(std::lround(m_size.y * scale))};
    }

    wxBitmap GetBitmap(const wxSize& size) override {
        if (m_bitmap.IsOk() && m_bitmap.GetSize() == size)
            return m_bitmap;
        m_bitmap = decodedPicture(m_name, size);
        if (!m_bitmap.IsOk())
            m_bitmap = wxBitmapBundle::FromSVG(embeddedFile(m_name + ".svg").data(), m_size)
                           .GetBitmap(size);
        return m_bitmap;
    }

private:
    std::string m_name;
    wxSize m_size;
    wxBitmap m_bitmap; ///< the one asked for last
};

} // namespace

wxBitmapBundle artwork(const std::string& name, const wxSize& size) {
    if (embeddedFile(name + ".svg").empty())
        return {};
    return wxBitmapBundle::FromImpl(new Drawing(name, size));
}

} // namespace orbisk::platform

#include "KVProjectData/menus/SourceMedia.h"

#include "KVProjectData/menus/MenuPaths.h"
#include "platform/automation/Bstr.h"
#include "platform/com/Activation.h"

namespace kv {

void OpenMedia(IZXMediaInformation& media, std::u16string_view source)
{
    ThrowIfFailed(media.Open(Bstr(ExpandPath(source)).Get()));
}

ComPtr<IZXMediaInformation> NewMediaInformation()
{
    ComPtr<IZXMediaInformation> media;
    ThrowIfFailed(CreateInstance(CLSID_ZXMediaInformation, media));
    return media;
}

PictureExtent PictureSize(IZXMediaInformation& media)
{
    ULONG width = 0;
    ULONG height = 0;
    double frameRate = 0;
    ThrowIfFailed(media.GetVideoProperties(ZXM_STREAM_PICTURE, 0, &width, &height, &frameRate));
    return {static_cast<LONG>(width), static_cast<LONG>(height)};
}

PictureExtent PictureSize(std::u16string_view source)
{
    const auto media = NewMediaInformation();
    OpenMedia(*media, source);
    return PictureSize(*media);
}

double PictureAspect(std::u16string_view source, double unknown)
{
    double aspect = unknown;
    Guarded([&] {
        const auto media = NewMediaInformation();
        OpenMedia(*media, source);
        const PictureExtent size = PictureSize(*media);
        ULONG width = 0;
        ULONG height = 0;
        double frameRate = 0;
        const auto frames = Query<IZXMediaFrames>(media);
        const bool moves = SUCCEEDED(media->GetVideoProperties(ZXM_STREAM_VIDEO, 0, &width, &height, &frameRate));
        // A photograph may be shown turned; of a clip the size of the frame counts.
        if (moves || !frames || FAILED(frames->get_AspectRatio(&aspect)) || aspect <= 0)
            aspect = size.height > 0 ? static_cast<double>(size.width) / size.height : unknown;
        return S_OK;
    });
    return aspect > 0 ? aspect : unknown;
}

} // namespace kv

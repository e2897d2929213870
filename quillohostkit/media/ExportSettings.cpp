#include "quillohostkit/media/ExportSettings.h"

#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace quillohostkit {
namespace {

constexpr int kLinesOfHD = 720;
/// By how much the rate that a file claims may differ from the average, relatively.
constexpr double kRateTolerance = 0.01;
/// Of a second.
constexpr long kFineUnit = 10000;
/// Of a second; in a movie whose pictures have no constant rate.
constexpr long kTicks = 90000;

struct Colours {
    char const* matrix;       // as ffmpeg's tags have it
    char const* scaleMatrix;  // as the filter "scale" has it
};
constexpr Colours kHD{"bt709", "bt709"};
constexpr Colours kSD{"smpte170m", "bt601"};

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> words) {
    for (auto const word : words)
        if (text == word) return true;
    return false;
}

bool IsTagged(std::string const& tag) {
    return !tag.empty() && tag != "unknown" && tag != "reserved";
}

bool IsHdr(Picture const& picture) {
    return IsOneOf(picture.transfer, {"smpte2084", "arib-std-b67"});
}

bool IsRgb(Picture const& picture) {
    return picture.matrix == "gbr" ||
           IsOneOf(std::string_view(picture.pixelFormat).substr(0, 3),
                   {"rgb", "bgr", "gbr", "arg", "abg", "0rg", "0bg", "pal"});
}

bool HasAlpha(Picture const& picture) {
    std::string_view const format = picture.pixelFormat;
    return format.starts_with("yuva") || format.starts_with("gbrap") || format.starts_with("ya") ||
           IsOneOf(format.substr(0, 4), {"rgba", "bgra", "argb", "abgr", "pal8"});
}

/// A movie in high dynamic range or in a wide gamut, as a screen of BT.709 shows it.
std::string ToBT709(Picture const& picture) {
    auto const orElse = [](std::string const& tag, char const* usual) {
        return IsTagged(tag) ? tag : std::string(usual);
    };
    auto const source = "zscale=tin=" + orElse(picture.transfer, "bt709") +
                        ":min=" + orElse(picture.matrix, "bt2020nc") +
                        ":pin=" + orElse(picture.primaries, "bt2020") +
                        ":rin=" + (picture.range == "pc" ? "full" : "limited");
    if (!IsHdr(picture)) return source + ":t=bt709:m=bt709:p=bt709:r=limited";
    // 100 cd/m2 is white; what is brighter is compressed rather than cut.
    return source +
           ":t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,tonemap=hable:desat=0,"
           "zscale=t=bt709:m=bt709:r=limited";
}

std::string Filters(Picture const& picture, Colours const& colours) {
    std::string filters;
    // The file's flag for all pictures is often wrong, the flag of each picture is not: progressive
    // pictures pass unchanged.
    if (!IsRgb(picture)) filters += "bwdif=mode=send_frame:deint=interlaced,";
    bool const isWide = IsHdr(picture) || picture.primaries == "bt2020";
    // Without a tag it is what pictures of its size usually are.
    std::string const from = isWide                     ? "bt709"
                             : IsTagged(picture.matrix) ? "auto"
                                                        : colours.scaleMatrix;
    // Transparent areas show black. A filter that changes the range of the colours would change
    // that of the alpha channel as well.
    std::string const toRgb = "scale=in_color_matrix=" + from + ",format=gbr";
    if (isWide && HasAlpha(picture))
        filters += "split[colour][alpha];[alpha]alphaextract,format=gray[opacity];[colour]" +
                   ToBT709(picture) + "," + toRgb + "p[opaque];[opaque][opacity]premultiply,";
    else if (isWide)
        filters += ToBT709(picture) + ",";
    else if (HasAlpha(picture))
        filters += toRgb + "ap,premultiply=inplace=1,format=gbrp,";
    // In two steps: a scaler that changes both the size and the matrix takes the wrong matrix.
    filters += "scale=ceil(iw/2)*2:ceil(ih/2)*2,scale=in_color_matrix=" + from +
               ":out_color_matrix=" + colours.scaleMatrix +
               ":out_range=tv,format=yuv420p,setparams=range=tv";
    return filters;
}

/// The primaries and the transfer function are what they were; nothing but the matrix changes.
std::string PrimariesOf(Picture const& picture, Colours const& colours) {
    if (IsHdr(picture) || picture.primaries == "bt2020" || IsRgb(picture)) return "bt709";
    return IsTagged(picture.primaries) ? picture.primaries : colours.matrix;
}
std::string TransferOf(Picture const& picture, Colours const& colours) {
    if (IsHdr(picture) || picture.primaries == "bt2020" || IsRgb(picture)) return "bt709";
    return IsTagged(picture.transfer) ? picture.transfer : colours.matrix;
}

/// The rate of a movie that claims a constant one.
struct Rate {
    long pictures = 0;
    long seconds = 1;  ///< in which so many are shown
    long scale = 1;    ///< by which `pictures` has to be multiplied to be a fine unit of time

    [[nodiscard]] std::string Ticks() const { return std::to_string(pictures * scale); }
};

std::optional<Rate> ConstantRate(Picture const& picture) {
    char* rest = nullptr;
    Rate rate;
    rate.pictures = std::strtol(picture.nominalRate.c_str(), &rest, 10);
    if (*rest == '/') rate.seconds = std::strtol(rest + 1, nullptr, 10);
    if (!picture.averageRate || rate.pictures <= 0 || rate.seconds <= 0) return std::nullopt;
    auto const claimed = static_cast<double>(rate.pictures) / static_cast<double>(rate.seconds);
    if (std::abs(claimed - *picture.averageRate) > kRateTolerance * claimed) return std::nullopt;
    if (rate.pictures < kFineUnit) rate.scale = kFineUnit / rate.pictures + 1;
    return rate;
}

/// Some formats round times to milliseconds: those that differ from the rate by no more fall into
/// step again, so that a constant rate stays one. All others are kept.
std::string RestoreSteps(Rate const& rate) {
    auto const perSecond = std::to_string(rate.pictures) + "/" + std::to_string(rate.seconds);
    auto const step = "round(T*" + perSecond + ")";
    return ",settb=1/" + rate.Ticks() + ",setpts='if(lt(abs(T-" + step + "/(" + perSecond +
           ")),0.0006)," + step + "*" + std::to_string(rate.seconds * rate.scale) + ",PTS)'";
}

/// Gives the last packet the time until the announced end of the picture, when its last picture
/// would be held for more than `leastTicks`. In ticks of the track: the filter's own unit of time
/// is the encoder's, which its packets do not have any more.
std::string HoldUntil(double end, long ticksPerSecond, long leastTicks) {
    auto const ticks = std::to_string(std::lround(end * static_cast<double>(ticksPerSecond)));
    // The packet that comes last need not be the picture that is shown last. At a constant rate
    // their order says when that one is shown.
    auto const held = ticks + "-(DTS-STARTDTS+STARTPTS)";
    return "setts=pts=PTS:dts=DTS:duration='if(eq(NEXT_DTS,NOPTS)*gt(" + held + "," +
           std::to_string(leastTicks) + "),max(DURATION," + ticks + "-PTS),DURATION)'";
}

/// How the picture's track counts time, and how long its last picture is held.
std::vector<std::string> HoldLastPicture(Movie const& movie, std::optional<Rate> const& rate) {
    auto const& end = movie.picture.end;
    if (!end) return {};
    if (!rate)
        return {"-video_track_timescale", std::to_string(kTicks), "-bsf:v",
                HoldUntil(*end, kTicks, 0)};
    // In a long movie the hold is too little to change the average rate. Other formats guess the
    // duration, and rounding it must not make a constant rate uneven.
    if (!IsOneOf(movie.format, {"mov", "matroska"})) return {};
    long const picture = rate->seconds * rate->scale;
    return {"-video_track_timescale", rate->Ticks(), "-bsf:v",
            HoldUntil(*end, rate->pictures * rate->scale, picture + picture / 2)};
}

}  // namespace

std::vector<std::string> ExportSettings(Movie const& movie, LastPicture lastPicture) {
    std::vector<std::string> settings;
    auto const add = [&settings](std::initializer_list<std::string> words) {
        settings.insert(settings.end(), words.begin(), words.end());
    };
    if (movie.hasPicture) {
        auto const& picture = movie.picture;
        auto const& colours = picture.height >= kLinesOfHD ? kHD : kSD;
        auto const rate = ConstantRate(picture);
        // V: not the cover of an album
        add({"-map", "0:V:0", "-c:v", "libx264", "-preset", "veryfast", "-crf", "20", "-pix_fmt",
             "yuv420p", "-vf", Filters(picture, colours) + (rate ? RestoreSteps(*rate) : ""),
             "-fps_mode", "vfr", "-enc_time_base", rate ? "1:" + rate->Ticks() : "-1"});
        if (lastPicture == LastPicture::AsProbed)
            for (auto const& word : HoldLastPicture(movie, rate))
                settings.push_back(word);
        add({"-colorspace", colours.matrix, "-color_primaries", PrimariesOf(picture, colours),
             "-color_trc", TransferOf(picture, colours), "-color_range", "tv"});
    }
    if (movie.hasSound) {
        add({"-map", "0:a:" + std::to_string(movie.sound.number), "-c:a", "aac", "-b:a", "192k"});
        // Browsers differ in what they make of more than two channels; stereo plays everywhere.
        if (movie.sound.channels > 2) add({"-ac", "2"});
    }
    return settings;
}

}  // namespace quillohostkit

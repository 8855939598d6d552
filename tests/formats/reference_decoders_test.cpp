// Files that others made, in every variant that their makers thought of, against the decoders that
// come with the formats' libraries and the netpbm tools.
#include <cctype>
#include <map>

#include "tests/formats/pictures.h"

namespace {

struct Reference {
    std::string command;  // writes the picture of the file $1 to standard output
    std::string endings;
    int files;    // so many at least are compared
    double most;  // difference of a sample, in 255ths
    // Where the files lie, or the options of an encoder.
    std::vector<std::string> sources;
    // The files are made: by this saver of ours, and by an encoder the file $1 of the picture
    // in.png.
    std::string saver = "", encoder = "";
};
void PrintTo(const Reference& reference, std::ostream* out) { *out << reference.command; }

// The decoders leave the picture as it lies in the file; what the file's name says of its
// orientation is what EXIF counts.
constexpr char kUpright[] =
    "case $1 in"
    " *orientation_2.*) pamflip -leftright;; *orientation_3.*) pamflip -rotate180;;"
    " *orientation_4.*) pamflip -topbottom;; *orientation_5.*) pamflip -transpose;;"
    " *orientation_6.*) pamflip -cw;; *orientation_7.*) pamflip -transpose -rotate180;;"
    " *orientation_8.*) pamflip -ccw;; *) cat;; esac";

// What is compared otherwise than the other files of its format, and why.
struct Exception {
    std::string command = "";  // instead of the format's
    double most = 0;
    int32_t error = 0;  // instead of a comparison
};

// pngtopam overlooks the see-through colour of RGB files.
std::string without(const std::string& color) {
    return "pngtopam $1 >colours && ppmcolormask rgb:" + color +
           " colours >alpha && pnmtopng -alpha=alpha colours";
}

// giftopnm leaves out what the first image doesn't cover.
std::string padded(const std::string& side) {
    return "giftopnm -image=1 -alphaout=own $1 | pnmpad " + side + " >colours && pnmpad -black " +
           side + " own >alpha && pnmtopng -alpha=alpha colours";
}

constexpr char kOwnAlpha[] =
    "tifftopnm -byrow -alphaout=alpha $1 >colours && pnmtopng -alpha=alpha colours";

const std::map<std::string, Exception> kExceptions = {
    {"ftbbn2c16.png", {without("ff/ff/ff")}},
    {"ftbgn2c16.png", {without("ff/ff/ff")}},
    {"ftbrn2c08.png", {without("ff/ff/ff")}},
    {"iftbbn2c16.png", {without("ff/ff/ff")}},
    {"iftbgn2c16.png", {without("ff/ff/ff")}},
    {"iftbrn2c08.png", {without("ff/ff/ff")}},
    {"rgb-8-1.8-tRNS.png", {without("01/01/01")}},
    {"rgb-8-linear-tRNS.png", {without("01/01/01")}},
    {"rgb-8-sRGB-tRNS.png", {without("01/01/01")}},
    {"rgb-8-tRNS.png", {without("01/01/01")}},
    {"first_frame_transparency.gif", {padded("-left=25")}},
    {"dispose_bgnd_transparency.gif", {padded("-right=11")}},
    // Inks under the lossy compression of JPEG.
    {"tiff_strip_cmyk_jpeg.tif", {.most = 3}},
    {"tiff_tiled_cmyk_jpeg.tif", {.most = 3}},
    // The decoders know no inks of 16 bits, but the same picture lies there with 8.
    {"tiff_strip_cmyk_16l_jpeg.tif", {"cat ${1%_16l_jpeg.tif}_jpeg.tif", 0.5}},
    // tiff2rgba multiplies colours by alpha in 8 bits.
    {"tiff_wrong_bits_per_sample.tiff", {.most = 1}},
    {"no_compress.tiff", {kOwnAlpha}},
    {"no_rps.tiff", {kOwnAlpha}},
    // tifftopnm doesn't divide colours by the alpha that they were multiplied with, and knows no
    // planes of 16 bits: they hold the same picture.
    {"tiff_16bit_RGBa.tiff",
     {"tifftopnm -byrow -alphaout=alpha $1 >multiplied && pamarith -divide multiplied alpha "
      ">colours && pnmtopng -alpha=alpha colours"}},
    {"tiff_strip_planar_16bit_RGBa.tiff", {"cat ${1%/*}/tiff_16bit_RGBa.tiff"}},
    {"tiff_tiled_planar_16bit_RGBa.tiff", {"cat ${1%/*}/tiff_16bit_RGBa.tiff"}},
    // Damaged: libtiff fills the gaps otherwise for pictures than for lines.
    {"crash-0da013a13571cc8eb457a39fee8db18f8a3c7127.tif", {"tifftopnm -byrow $1"}},
    {"crash-74d2a78403a5a59db1fb0a2b8735ac068a75f6e3.tif", {"tifftopnm -byrow $1"}},
    // Damaged: tiff2rgba says so, but its exit status doesn't.
    {"crash-63b1dffefc8c075ddc606c0a2f5fdc15ece78863.tif", {.error = formats::kDamaged}},
    {"crash-2020-10-test.tif", {.error = formats::kDamaged}},
    {"tiff_overflow_rows_per_strip.tif", {.error = formats::kDamaged}},
    {"oom-225817ca0f8c663be7ab4b9e717b02c661e66834.tif", {.error = formats::kDamaged}},
    // Signed samples, and samples of 32 bits.
    {"16bit.s.tif", {.error = formats::kUnsupported}},
    {"hopper_unknown_pixel_mode.tif", {.error = formats::kUnsupported}},
};

constexpr char kDecodeTiff[] =
    "rgba() { tiff2rgba $1 rgba.tif && cat rgba.tif; };"
    "case $(tiffinfo $1) in *Extra?Samples*) rgba $1;;"
    " *Bits/Sample:?16*) tifftopnm -byrow -orientraw $1;;"
    " *) tifftopnm -orientraw $1 || rgba $1;; esac";
constexpr char kDecodeGif[] =
    "giftopnm -image=1 -alphaout=alpha $1 >colours && pnmtopng -alpha=alpha colours";
constexpr char kDecodeJp2[] = "opj_decompress -i $1 -o out.ppm >&2 && cat out.ppm";
constexpr char kDecodeJxl[] = "djxl $1 out.ppm && cat out.ppm";
constexpr char kDecodeHeif[] = "heif-convert $1 out.png >&2 && cat out.png";

const std::vector<std::string> kJp2Options = {
    "-t 100,77 -d 13,17 -T 5,3", "-t 64,64 -TP R -SOP -EPH", "-n 1 -M 63",
    "-I -q 35 -p RPCL",          "-r 20,10,1 -mct 0",        "-s 2,2"};
const std::vector<std::string> kJxlOptions = {"-d 0 -e 3", "-d 1 -e 4", "-d 3 -p -e 5",
                                              "-d 1 --modular=1 -e 3"};

const Reference kReferences[] = {
    {"pngtopam -alphapam $1", ".png", 200, 0, {kGoSources, kPictures / "libpng1.6"}},
    {"djpeg -dct int -pnm $1", ".jpg .jpeg", 70, 3, {kGoSources, kPillow, kTurbo}},
    {kDecodeTiff, ".tif .tiff", 91, 0, {kGoImages, kPillow, kPictures / "tiff"}},
    {"dwebp -quiet -pam -o - $1", ".webp", 25, 0, {kGoImages, kPillow}},
    {kDecodeGif, ".gif", 30, 0, {kGoSources, kPillow}},
    {kDecodeJp2, ".jp2", 10, 0, kJp2Options, "jpeg2000", "opj_compress -i in.png -o $1 "},
    {kDecodeJxl, ".jxl", 8, 0, kJxlOptions, "jxl", "cjxl in.png $1 "},
    {kDecodeHeif, ".heif", 5, 0, {""}, "heif", "heif-enc in.png -o $1"},
    {kDecodeHeif, ".avif", 5, 0, {""}, "avif", "heif-enc in.png -o $1"},
};

class ReferenceDecoder : public RealFiles, public testing::WithParamInterface<Reference> {
  protected:
    // The exit status: decoders complain also of files of which they can make a picture. What asks
    // for more memory than any of the files needs has been taken in by a small file's claims.
    int decode(const fs::path& file, const std::string& command) const {
        const bool turned = file.string().find("orientation_") != std::string::npos;
        const std::string script = "ulimit -v 1000000; { " + command + "; }" +
                                   (turned ? std::string(" | ") + kUpright : "");
        return std::system(("cd " + files_.path() + " && sh -c '" + script + "' sh '" +
                            file.string() + "' >reference 2>/dev/null")
                               .c_str());
    }

    bool isMeant(const fs::path& file) const {
        std::string ending = file.extension();
        std::transform(ending.begin(), ending.end(), ending.begin(), ::tolower);
        return !ending.empty() &&
               (GetParam().endings + ' ').find(ending + ' ') != std::string::npos;
    }

    // Of noise, which shows every difference.
    void makeFiles() const {
        const auto& [command, ending, files, most, options, saver, encoder] = GetParam();
        int count = 0;
        const auto next = [&, end = ending] {
            return files_.write("made/" + std::to_string(++count) + end, "");
        };
        for (const int32_t channels : {1, 3}) {
            Pixels pixels(300, 70, channels, 1);
            pixels.fill(noiseOf(pixels.samples.size()));
            const int32_t colorSpace = channels == 1 ? VORN_CS_GRAY : VORN_CS_RGB;
            for (const char* settings : {"Lossless=false", "Lossless=true"}) {
                user_.store(saver.c_str(), settings);
                EXPECT_TRUE(save(Image(saver, VORN_SAVER), next(), pixels, colorSpace));
            }
            EXPECT_TRUE(save(Image("png", VORN_SAVER), files_.path("in.png"), pixels, colorSpace));
        }
        for (const std::string& option : options)
            EXPECT_EQ(decode(next(), encoder + option), 0) << option;
    }
};

TEST_P(ReferenceDecoder, HasTheSamePixelsAndFindsTheSameFilesBroken) {
    const Reference& wanted = GetParam();
    std::vector<std::string> folders = wanted.sources;
    if (!wanted.saver.empty()) {
        if (!has(wanted.saver) ||
            decode("", "command -v " + wanted.encoder.substr(0, wanted.encoder.find(' '))) != 0)
            GTEST_SKIP() << wanted.saver << " or its encoder is missing (scripts/setup)";
        makeFiles();
        folders = {files_.path("made")};
    }
    for (const fs::path folder : folders) {
        if (!fs::exists(folder))
            GTEST_SKIP() << folder << " is missing (scripts/setup, scripts/test_pictures)";
    }
    int compared = 0;
    for (const std::string& folder : folders) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (!isMeant(entry.path())) continue;
            const Picture picture = read(entry.path());
            const auto found = kExceptions.find(entry.path().filename());
            Exception exception{.most = wanted.most};
            if (found != kExceptions.end()) exception = found->second;
            if (exception.error) {
                EXPECT_EQ(picture.error, exception.error) << entry.path();
                continue;
            }
            const std::string& other = exception.command;
            const int status = decode(entry.path(), other.empty() ? wanted.command : other);
            const Picture reference = read(files_.path("reference"));
            EXPECT_TRUE(other.empty() || !reference.error) << entry.path();
            if (picture.error) {
                EXPECT_NE(status, 0) << entry.path() << " is refused: " << picture.error;
            } else if (!reference.error) {
                ++compared;
                EXPECT_LE(furthest(picture, reference), exception.most) << entry.path();
            }
        }
    }
    EXPECT_GE(compared, wanted.files);
}

INSTANTIATE_TEST_SUITE_P(RealFiles,
                         ReferenceDecoder,
                         testing::ValuesIn(kReferences),
                         [](const auto& tested) {
                             const std::string& endings = tested.param.endings;
                             return endings.substr(1, endings.find(' ') - 1);
                         });

}  // namespace

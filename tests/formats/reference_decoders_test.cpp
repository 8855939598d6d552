// Files that others made, in every variant that their makers thought of, against the decoders that
// come with the formats' libraries and the netpbm tools.
#include <cctype>
#include <map>

#include "tests/formats/format_files.h"
#include "tests/formats/pictures.h"

namespace {

struct Reference {
    const char* name;
    const char* command;  // writes the picture of the file $1 to standard output
    double most;          // difference of a sample, in 255ths
    std::vector<const char*> endings;
    std::vector<fs::path> folders;
    int files;  // so many at least are compared
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

constexpr double kAnything = 256;

// What may differ more than the other files of its format, and why.
const std::map<std::string, double> kMore = {
    // pngtopam overlooks the see-through colour of RGB files.
    {"ftbbn2c16.png", kAnything},
    {"ftbgn2c16.png", kAnything},
    {"ftbrn2c08.png", kAnything},
    {"iftbbn2c16.png", kAnything},
    {"iftbgn2c16.png", kAnything},
    {"iftbrn2c08.png", kAnything},
    {"rgb-8-1.8-tRNS.png", kAnything},
    {"rgb-8-linear-tRNS.png", kAnything},
    {"rgb-8-sRGB-tRNS.png", kAnything},
    {"rgb-8-tRNS.png", kAnything},
    // Inks under the lossy compression of JPEG.
    {"tiff_strip_cmyk_jpeg.tif", 3},
    {"tiff_tiled_cmyk_jpeg.tif", 3},
    // tifftopnm doesn't know inks of 16 bits, and tiff2rgba multiplies colours by alpha in 8 bits.
    {"tiff_strip_cmyk_16l_jpeg.tif", kAnything},
    {"tiff_wrong_bits_per_sample.tiff", 1},
    // The decoders don't divide 16-bit colours by the alpha that they were multiplied with.
    {"tiff_16bit_RGBa.tiff", kAnything},
    {"tiff_strip_planar_16bit_RGBa.tiff", kAnything},
    {"tiff_tiled_planar_16bit_RGBa.tiff", kAnything},
    // Damaged: libtiff fills the gaps otherwise for pictures than for lines, and tiff2rgba doesn't
    // say that there are any.
    {"crash-0da013a13571cc8eb457a39fee8db18f8a3c7127.tif", kAnything},
    {"crash-74d2a78403a5a59db1fb0a2b8735ac068a75f6e3.tif", kAnything},
    {"crash-63b1dffefc8c075ddc606c0a2f5fdc15ece78863.tif", kAnything},
    {"crash-2020-10-test.tif", kAnything},
    {"tiff_overflow_rows_per_strip.tif", kAnything},
    {"oom-225817ca0f8c663be7ab4b9e717b02c661e66834.tif", kAnything},
    // Signed samples, and samples of 32 bits, are not supported.
    {"16bit.s.tif", kAnything},
    {"hopper_unknown_pixel_mode.tif", kAnything},
    // giftopnm leaves out what the first image doesn't cover.
    {"first_frame_transparency.gif", kAnything},
    {"dispose_bgnd_transparency.gif", kAnything},
};

const Reference kReferences[] = {
    {"Png", "pngtopam -alphapam $1", 0, {".png"}, {kGoSources, kPictures / "libpng1.6"}, 200},
    {"Jpeg",
     "djpeg -dct int -pnm $1",
     3,
     {".jpg", ".jpeg"},
     {kGoSources, kPillow, kPictures / "libjpeg-turbo"},
     70},
    {"Tiff",
     "rgba() { tiff2rgba $1 rgba.tif && cat rgba.tif; };"
     "case $(tiffinfo $1) in *Extra?Samples*) rgba $1;;"
     " *Bits/Sample:?16*) tifftopnm -byrow -orientraw $1;;"
     " *) tifftopnm -orientraw $1 || rgba $1;; esac",
     0,
     {".tif", ".tiff"},
     {kPillow, kPictures / "tiff"},
     80},
    {"Webp", "dwebp -quiet -pam -o - $1", 0, {".webp"}, {kGoImages, kPillow}, 25},
    {"Gif",
     "giftopnm -image=1 -alphaout=alpha $1 >colours && pnmtopng -alpha=alpha colours",
     0,
     {".gif"},
     {kGoSources, kPillow},
     30},
};

class ReferenceDecoder : public RealFiles, public testing::WithParamInterface<Reference> {
  protected:
    // The exit status: decoders complain also of files of which they can make a picture. What asks
    // for more memory than any of the files needs has been taken in by a small file's claims.
    int decode(const fs::path& file) const {
        const bool turned = file.string().find("orientation_") != std::string::npos;
        const std::string script = std::string("ulimit -v 1000000; { ") + GetParam().command +
                                   "; }" + (turned ? std::string(" | ") + kUpright : "");
        return std::system(("cd " + files_.path() + " && sh -c '" + script + "' sh '" +
                            file.string() + "' >reference 2>/dev/null")
                               .c_str());
    }

    bool isMeant(const fs::path& file) const {
        std::string ending = file.extension();
        std::transform(ending.begin(), ending.end(), ending.begin(), ::tolower);
        const auto& endings = GetParam().endings;
        return std::find(endings.begin(), endings.end(), ending) != endings.end();
    }

    ScratchDirectory files_;
};

TEST_P(ReferenceDecoder, HasTheSamePixelsAndFindsTheSameFilesBroken) {
    for (const fs::path& folder : GetParam().folders) {
        if (!fs::exists(folder))
            GTEST_SKIP() << folder << " is missing (scripts/setup, scripts/test_pictures)";
    }
    int compared = 0;
    for (const fs::path& folder : GetParam().folders) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (!isMeant(entry.path())) continue;
            const Picture picture = read(entry.path());
            const auto more = kMore.find(entry.path().filename());
            const double most = more == kMore.end() ? GetParam().most : more->second;
            if (most == kAnything) continue;
            const int status = decode(entry.path());
            const Picture reference = read(files_.path("reference"));
            if (picture.error) {
                EXPECT_NE(status, 0) << entry.path() << " is refused: " << picture.error;
            } else if (!reference.error) {
                ++compared;
                EXPECT_LE(furthest(picture, reference), most) << entry.path();
            }
        }
    }
    EXPECT_GE(compared, GetParam().files);
}

INSTANTIATE_TEST_SUITE_P(RealFiles,
                         ReferenceDecoder,
                         testing::ValuesIn(kReferences),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace

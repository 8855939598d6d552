// The loaders and savers of all formats that are built.
#pragma once

#include "formats/bmp/bmp_loader.h"
#include "formats/bmp/bmp_saver.h"
#include "formats/pnm/pnm_loader.h"
#include "formats/pnm/pnm_saver.h"
#include "formats/tga/tga_loader.h"
#include "formats/tga/tga_saver.h"
#ifdef VORN_HAS_PNG
#include "formats/png/png_loader.h"
#include "formats/png/png_saver.h"
#endif
#ifdef VORN_HAS_JPEG
#include "formats/jpeg/jpeg_loader.h"
#include "formats/jpeg/jpeg_saver.h"
#endif
#ifdef VORN_HAS_TIFF
#include "formats/tiff/tiff_loader.h"
#include "formats/tiff/tiff_saver.h"
#endif
#ifdef VORN_HAS_WEBP
#include "formats/webp/webp_loader.h"
#include "formats/webp/webp_saver.h"
#endif
#ifdef VORN_HAS_HEIF
#include "formats/heif/heif_loader.h"
#include "formats/heif/heif_saver.h"
#endif
#ifdef VORN_HAS_GIF
#include "formats/gif/gif_loader.h"
#include "formats/gif/gif_saver.h"
#endif
#ifdef VORN_HAS_JXL
#include "formats/jxl/jxl_loader.h"
#include "formats/jxl/jxl_saver.h"
#endif
#ifdef VORN_HAS_JPEG2000
#include "formats/jpeg2000/jpeg2000_loader.h"
#include "formats/jpeg2000/jpeg2000_saver.h"
#endif

/* vorn/vorn.h - everything: hosts and modules may include this one header. */
#ifndef VORN_VORN_H
#define VORN_VORN_H

#include <vorn/host.h>
#include <vorn/library.h>
#include <vorn/module.h>
#include <vorn/scaler.h>
#include <vorn/support.h>
#include <vorn/tags.h>
#include <vorn/types.h>
#include <vorn/unv.h>
#include <vorn/xd.h>

#endif

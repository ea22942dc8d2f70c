// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0
//
// Preloaded into a program, makes the plain file in TAVO_TEST_FRAMEBUFFER a frame buffer of 800 x 480 pixels
// with 32 bits each.

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <linux/fb.h>
#include <sys/stat.h>

namespace {
constexpr unsigned width = 800;
constexpr unsigned height = 480;
constexpr unsigned pixelBytes = 4;

bool isFrameBuffer(int descriptor)
{
    const char *name = std::getenv("TAVO_TEST_FRAMEBUFFER");
    struct stat file = {};
    struct stat wanted = {};
    return name != nullptr && stat(name, &wanted) == 0 && fstat(descriptor, &file) == 0 &&
           file.st_ino == wanted.st_ino && file.st_dev == wanted.st_dev;
}

int describe(fb_fix_screeninfo *info)
{
    std::memset(info, 0, sizeof *info);
    info->smem_len = width * height * pixelBytes;
    info->line_length = width * pixelBytes;
    info->visual = FB_VISUAL_TRUECOLOR;
    return 0;
}

int describe(fb_var_screeninfo *info)
{
    std::memset(info, 0, sizeof *info);
    info->xres = info->xres_virtual = width;
    info->yres = info->yres_virtual = height;
    info->bits_per_pixel = pixelBytes * 8;
    info->red = {16, 8, 0};
    info->green = {8, 8, 0};
    info->blue = {0, 8, 0};
    info->width = 200;
    info->height = 120;
    return 0;
}
} // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (request == FBIOGET_FSCREENINFO && isFrameBuffer(descriptor)) {
        return describe(static_cast<fb_fix_screeninfo *>(argument));
    }
    if (request == FBIOGET_VSCREENINFO && isFrameBuffer(descriptor)) {
        return describe(static_cast<fb_var_screeninfo *>(argument));
    }
    using Ioctl = int (*)(int, unsigned long, void *);
    static const auto next = reinterpret_cast<Ioctl>(dlsym(RTLD_NEXT, "ioctl"));
    return next(descriptor, request, argument);
}

#pragma once

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

namespace ostrel::detail {

/// libjpeg reports errors through a function that must not return: it jumps to `escape`. In functions that
/// use this, no object with a destructor may live between setjmp and longjmp.
struct JpegErrors {
    jpeg_error_mgr manager;  // the first member, because libjpeg passes only a pointer to it
    std::jmp_buf escape;

    jpeg_error_mgr* prepare() {
        jpeg_error_mgr* const errors = jpeg_std_error(&manager);
        errors->error_exit = [](j_common_ptr codec) {
            std::longjmp(reinterpret_cast<JpegErrors*>(codec->err)->escape, 1);
        };
        errors->output_message = [](j_common_ptr) {};
        return errors;
    }
};

}  // namespace ostrel::detail

# One interface target carries every compile flag, so warnings and defines live in one place.
add_library(twinsift_flags INTERFACE)
target_compile_options(twinsift_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor)
if(TWINSIFT_WERROR)
    target_compile_options(twinsift_flags INTERFACE -Werror)
endif()
target_compile_definitions(twinsift_flags INTERFACE
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_CAST_TO_ASCII
    QT_NO_URL_CAST_FROM_STRING
    QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_BEFORE=0x060400
    _FILE_OFFSET_BITS=64)
if(TWINSIFT_SANITIZE)
    target_compile_options(twinsift_flags INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined)
    target_link_options(twinsift_flags INTERFACE -fsanitize=address,undefined)
endif()

# The dash's processor: 32-bit ARM with hardware floating point, built with Debian's
# cross compiler against the armhf libraries installed beside the PC's own through
# multiarch (scripts/install-target-deps.sh).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

# What the build runs itself (the picture converter, the A2L writer, the tests' listing)
# and the tests run under user-mode emulation. Multiarch puts the armhf loader and C
# library in the PC's own root, which is therefore the emulator's sysroot: no -L. The
# cross compiler's /usr/arm-linux-gnueabihf holds another build of the C library, whose
# loader must not be paired with the multiarch libc.so.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)

# pkg-config reads the armhf packages' files, never the PC's.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabihf/pkgconfig:/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")

# Cross build for the device's architecture, 32-bit ARM with hardware floating point, with
# Debian's arm-linux-gnueabihf compilers and sysroot. Built programs run on the development
# host under qemu-arm (user-mode emulation) with that sysroot as their library root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(SYSCOMMON_ARM_TRIPLET arm-linux-gnueabihf)
set(SYSCOMMON_ARM_SYSROOT /usr/${SYSCOMMON_ARM_TRIPLET})

set(CMAKE_C_COMPILER ${SYSCOMMON_ARM_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${SYSCOMMON_ARM_TRIPLET}-g++)

# Libraries and headers come from the ARM sysroot only; build tools from the host.
set(CMAKE_FIND_ROOT_PATH ${SYSCOMMON_ARM_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${SYSCOMMON_ARM_SYSROOT})

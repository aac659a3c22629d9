# A recipe for the Yocto Project. Not tested: there is no Yocto build on the developers' machines.
#
# Put it into a layer of the board, together with `files/run-ptest`, and set three things: the
# location of the sources (SRC_URI), the recipe with the board's HAL library and headers
# (CVN_HAL_RECIPE), and the directory of its headers in the sysroot (CVN_HAL_INCLUDE_DIR).
SUMMARY = "Test harness for the HAL of a television system-on-chip"
LICENSE = "CLOSED"

SRC_URI = "git:///path/to/cvntester.git;protocol=file;branch=main \
           file://run-ptest"
SRCREV = "${AUTOREV}"
PV = "1.0.0+git"
S = "${WORKDIR}/git"

CVN_HAL_RECIPE ?= "cvn-hal"
CVN_HAL_INCLUDE_DIR ?= "${STAGING_INCDIR}/cvn"
DEPENDS = "${CVN_HAL_RECIPE}"

inherit cmake ptest

EXTRA_OECMAKE = "-DCVN_BUILD_SIM=OFF -DCVN_BUILD_TESTS=OFF \
                 -DCVN_HAL_LIBRARY=${STAGING_LIBDIR}/libcvn_k2vhal.so \
                 -DCVN_HAL_INCLUDE_DIR=${CVN_HAL_INCLUDE_DIR}"

# Weak symbols of the HAL are not detected as a dependency on its package.
RDEPENDS:${PN} += "${CVN_HAL_RECIPE}"

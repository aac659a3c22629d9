################################################################################
#
# cvntester
#
################################################################################

# Not tested: there is no Buildroot on the developers' machines. Copy this directory to package/ of
# a Buildroot tree or of an external tree, and set the sources and the package with the board's HAL.
CVNTESTER_VERSION = 1.0.0
CVNTESTER_SITE = /path/to/cvntester
CVNTESTER_SITE_METHOD = local
CVNTESTER_DEPENDENCIES = cvn-hal
CVNTESTER_CONF_OPTS = \
	-DCVN_BUILD_SIM=OFF \
	-DCVN_BUILD_TESTS=OFF \
	-DCVN_HAL_LIBRARY=$(STAGING_DIR)/usr/lib/libcvn_k2vhal.so \
	-DCVN_HAL_INCLUDE_DIR=$(STAGING_DIR)/usr/include/cvn

$(eval $(cmake-package))

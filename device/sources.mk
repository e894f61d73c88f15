# Reads the source lists (tweak.sources, settings.sources) for Theos, the
# same way scripts/package-device.sh reads them:
#
#   $(call hushwall_sources,<list>)           the sources, absolute, in order
#   $(call hushwall_links,<list>,framework)   the names of "framework:" lines
#                                             (also private-framework, library)

HUSHWALL_ROOT := $(abspath $(dir $(lastword $(MAKEFILE_LIST)))..)

# One word per line: comments and blanks dropped, "framework: X" made
# "framework:X".
_hushwall_sed := -e 's/[[:space:]]*\#.*//' -e 's/^[[:space:]]*//' -e 's/[[:space:]]*$$//' \
  -e 's/^\(framework\|private-framework\|library\):[[:space:]]*/\1:/'
_hushwall_words = $(shell sed $(_hushwall_sed) '$(1)')
_hushwall_links := framework:% private-framework:% library:%
_hushwall_paths = $(foreach p,$(1),$(wildcard $(HUSHWALL_ROOT)/$(p)))

hushwall_sources = $(filter-out %_test.cpp %_test.mm \
    $(call _hushwall_paths,$(patsubst !%,%,$(filter !%,$(call _hushwall_words,$(1))))),\
  $(call _hushwall_paths,$(filter-out !% $(_hushwall_links),$(call _hushwall_words,$(1)))))

hushwall_links = $(patsubst $(2):%,%,$(filter $(2):%,$(call _hushwall_words,$(1))))

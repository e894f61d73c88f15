# The template database "HSWL.db": an empty database made from the schema
# that the tweak itself and the Linux build use (model/schema.sql).
#
#   $(call hushwall_template_db,<file>)   the recipe, for the bundle's staging
#   make -f template_db.mk <dir>/HSWL.db  the same on its own, without Theos
#
# HUSHWALL_SCHEMA names the schema file; by default the repository's, seen
# from this folder.

_hushwall_template_db_dir := $(dir $(lastword $(MAKEFILE_LIST)))
ifeq ($(HUSHWALL_SCHEMA),)
HUSHWALL_SCHEMA := $(abspath $(_hushwall_template_db_dir)../../model/schema.sql)
endif

hushwall_template_db = mkdir -p "$(dir $(1))" && rm -f "$(1)" && sqlite3 "$(1)" < "$(HUSHWALL_SCHEMA)"

%/HSWL.db: $(HUSHWALL_SCHEMA)
	$(call hushwall_template_db,$@)

# The way in for people and for continuous integration. Beyond make and git, everything that is
# needed is installed by tools/bootstrap; the build itself is CMake's (CMakePresets.json).
.DEFAULT_GOAL := help
.PHONY: help bootstrap bootstrap-development demo build test bench package format format-check clean
# CMake and CTest spread the work themselves.
.NOTPARALLEL:

help: ## list the targets
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/  \1\t\2/p' $(firstword $(MAKEFILE_LIST)) | expand -t 26

bootstrap: ## install what the build needs and this machine lacks
	@tools/bootstrap

bootstrap-development: ## install what tests, packages and the format check need besides
	@tools/bootstrap development

demo: build ## show one week of the sample calendars, the lines that went over the pipe, and what changes write
	@python3 examples/python/agenda.py
	@echo
	@python3 examples/python/changes.py

build: bootstrap ## build build/release/tidemark-cal and build/release/tidemark-cal-sim
	@cmake --preset release --log-level=WARNING
	@cmake --build --preset release

test: bootstrap-development ## check the format, then build and test the presets dev, asan, tsan and fuzz
	@tools/run_tests

bench: bootstrap-development build ## measure against the machine's limits and draw it (up to 100,000 items, a quarter of an hour)
	@python3 bench/plots.py build/bench \
	  build/release/bench/measure --programs build/release/bench --bridge build/release/tidemark-cal \
	  --generator bench/generate_store.py --scratch build/bench

package: bootstrap-development build ## make a package of the release build: a .deb on Debian and Ubuntu
	@cpack --config build/release/CPackConfig.cmake -B build/release

format: bootstrap-development ## format the C and C++ sources in place
	@tools/format

format-check: bootstrap-development ## say which sources are not formatted
	@tools/format --check

clean: ## remove everything that was built
	rm -rf build

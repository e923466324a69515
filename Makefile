# The front door. `make demo` and `make test` do all the set-up they need on a fresh Debian machine.
PACKAGES = g++ cmake ninja-build ccache pkg-config libhwy-dev libfmt-dev libsndfile1-dev libtag1-dev libsoxr-dev libcli11-dev libebur128-dev \
           libcairo2-dev nlohmann-json3-dev libglib2.0-dev zlib1g-dev lv2-dev dpf-source libjack-jackd2-dev \
           libgtest-dev libgmock-dev libbenchmark-dev libfftw3-dev libpng-dev clang-format liblilv-dev lilv-utils sordi jackd2 \
           librsvg2-bin libpango1.0-dev libx11-dev libxext-dev libxi-dev libxrandr-dev libgl-dev libxtst-dev fonts-inter \
           desktop-file-utils appstream man-db
# What draws the pictures; a build needs only what is drawn.
ARTWORK_PACKAGES = python3-cairo python3-gi-cairo gir1.2-pango-1.0
WERROR ?= OFF
JOBS   ?= $(shell nproc)

.PHONY: build plugins install uninstall test test-hosts demo bench setup format check-format tidy asan tsan fuzz \
        preset-table aax-table artwork artwork-sheet gallery scope app walk display-pictures interface-pictures \
        bench-commands bench-compare performance-page clean

build: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta

plugins: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target plugins

# DESTDIR is put before PREFIX while files are copied, for those who make packages.
PREFIX  ?= /usr/local
DESTDIR ?=
STAGE    = $(if $(DESTDIR),$(abspath $(DESTDIR)))
install: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target product
	@DESTDIR="$(STAGE)" cmake --install build --prefix "$(abspath $(PREFIX))"

uninstall:
	@cmake -DPREFIX="$(abspath $(PREFIX))" -DDESTDIR="$(STAGE)" -P cmake/installed_files.cmake

# The last two read and make files independently of us.
test: PACKAGES += $(ARTWORK_PACKAGES) xvfb dbus libgl1-mesa-dri ffmpeg flac
test: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS)
	@cmake --build build --parallel $(JOBS) --target all_verify_interface_header_sets
	@ctest --test-dir build --output-on-failure --parallel $(JOBS)

# Other people's hosts, from Debian's packages.
test-hosts: PACKAGES += jalv jackd2 qtractor ardour xvfb xauth openbox xdotool wmctrl x11-utils imagemagick
test-hosts: plugins
	@tests/foreign/run.sh build/plugins

demo: build
	@cmake --build build --parallel $(JOBS) --target render_song
	@tools/demo.sh

bench: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta_bench
	@build/vanta_bench --benchmark_out=build/bench.json --benchmark_out_format=json

# Whole commands beside what else a mastering script would call.
bench-commands: PACKAGES += ffmpeg sox bc time
bench-commands: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta render_song loudness_peer
	@bench/commands.sh

# The limiter and its parts beside other people's, from Debian's packages, in one run. COMPARE holds options, such as
# --target all: see build/vanta_compare --help.
COMPARE_PACKAGES = x42-plugins lsp-plugins-lv2 libzita-resampler-dev
COMPARE ?=
bench-compare performance-page: PACKAGES += $(COMPARE_PACKAGES)
bench-compare: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) -DVANTA_BENCH_COMPARE=ON > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta_compare
	@bench/compare/run.sh $(COMPARE)

# Takes ten to twenty minutes: all that the comparison measures, with every instruction set, into the page below its mark.
performance-page: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) -DVANTA_BENCH_COMPARE=ON > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta_compare
	@bench/compare/run.sh --target all --before bench/compare/before.json > build/performance.md
	@{ sed '/^<!-- figures -->$$/q' docs/performance.md; echo; cat build/performance.md; } > docs/performance.md.new && \
	   mv docs/performance.md.new docs/performance.md

asan tsan: PACKAGES += $(ARTWORK_PACKAGES) xvfb dbus libgl1-mesa-dri ffmpeg flac
asan tsan: setup
	@cmake --preset $@ > /dev/null
	@cmake --build --preset $@ --parallel $(JOBS)
	@ctest --preset $@

# FUZZ_SECONDS a target. Only this needs clang; llvm names the lines in what it reports.
FUZZ_SECONDS ?= 60
fuzz: PACKAGES += clang-14 libclang-rt-14-dev llvm-14
fuzz: setup
	@cmake -S . -B build/fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVANTA_FUZZ=ON \
	   -DVANTA_SANITIZE=fuzzer-no-link,address,undefined -DVANTA_BENCH=OFF -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build/fuzz --parallel $(JOBS) --target fuzz_programs
	@tests/fuzz/run.sh build/fuzz $(FUZZ_SECONDS)

gallery: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta-gallery

# A window with display and meters over a file: build/vanta-scope FILE
scope: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta-scope

# The demonstration song in every mode of the display, for docs/display.md.
display-pictures: build
	@cmake --build build --parallel $(JOBS) --target render_song
	@tools/display_pictures.sh

# The interface in every size, layout and scale, to be looked at: build/interface-pictures
interface-pictures: PACKAGES += sox
interface-pictures: app
	@cmake --build build --parallel $(JOBS) --target render_song
	@tools/interface_pictures.sh

# A newcomer's first steps by mouse and keyboard, checked, with the pictures of docs/walk.md
walk: PACKAGES += xvfb xdotool imagemagick zenity tesseract-ocr
walk: app
	@cmake --build build --parallel $(JOBS) --target vanta render_song
	@tools/walk.sh

# The limiter in a window of its own: build/vanta-app FILE
app: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta-app

# Takes a minute: plays the demonstration song through all factory presets.
preset-table: build
	@cmake --build build --parallel $(JOBS) --target preset_table
	@build/preset_table > docs/presets.md.new && mv docs/presets.md.new docs/presets.md

# What the AAX module says of itself, whatever the settings of whoever asks. The first lines of the page stay.
aax-table: plugins build
	@{ head -n 6 docs/aax.md; XDG_CONFIG_HOME=$(CURDIR)/build/no-settings build/vanta aax-scan build/plugins/vanta-aax.so; } \
	   > docs/aax.md.new && mv docs/aax.md.new docs/aax.md

# Draws the sources of the pictures anew, those that tools/artwork draws.
artwork: PACKAGES += $(ARTWORK_PACKAGES)
artwork: setup
	@tools/artwork/draw.py resources/artwork

# All pictures in use and one by one, at the scales 1, 1.5 and 2, to be looked at: build/artwork.png
artwork-sheet: PACKAGES += $(ARTWORK_PACKAGES)
artwork-sheet: setup
	@cmake --preset release -DVANTA_WERROR=$(WERROR) > /dev/null
	@cmake --build build --parallel $(JOBS) --target vanta_gui_artwork
	@tools/artwork/sheet.py build/gui/artwork build/artwork.png

format:
	@git ls-files '*.cpp' '*.hpp' | xargs clang-format -i

check-format: setup
	@git ls-files '*.cpp' '*.hpp' | xargs clang-format --dry-run --Werror

# Takes half an hour on two cores. TIDY narrows it down: make tidy TIDY='dsp/*.cpp'. It reads how files are compiled from
# a build folder of its own: clang cannot read the headers that g++ has precompiled.
TIDY ?= *.cpp
tidy: PACKAGES += clang-tidy
tidy: setup
	@cmake --preset tidy > /dev/null
	@git ls-files '$(TIDY)' | grep -v '^tests/fuzz/fuzz_main' | xargs -P $(JOBS) -n 4 \
	   clang-tidy --quiet -p build/tidy --extra-arg=-Wno-unknown-warning-option

# Installs only what is missing, so that a machine that has everything needs no network and no root.
setup:
	@missing=""; for p in $(PACKAGES); do \
	   dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "ok installed" || missing="$$missing $$p"; done; \
	 if [ -n "$$missing" ]; then \
	   echo "installing:$$missing"; \
	   sudo=""; [ "$$(id -u)" = 0 ] || sudo=sudo; \
	   $$sudo apt-get update -qq && DEBIAN_FRONTEND=noninteractive $$sudo apt-get install -y -qq --no-install-recommends $$missing > /dev/null; fi

clean:
	@rm -rf build

# Who may include whom, from the ground up. A room is one folder. It sees itself and the rooms listed after SEES, and
# nothing else: the build fails when one of its files includes what it may not see. A room can only see rooms listed
# before it, so there are no cycles.

# vanta_layer(FOLDER [SEES folders...]) states a room's place and checks all that lies in its folder.
function(vanta_layer folder)
  cmake_parse_arguments(LAYER "" "" "SEES" ${ARGN})
  get_property(known GLOBAL PROPERTY vanta_layers)
  foreach(seen ${LAYER_SEES})
    if(NOT seen IN_LIST known)
      message(FATAL_ERROR "cmake/layers.cmake: ${folder} sees ${seen}, which must come before it")
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY vanta_layers ${folder})
  string(REPLACE "/" "_" name ${folder})
  set_property(GLOBAL PROPERTY vanta_sees_${name} ${LAYER_SEES})

  file(GLOB files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.hpp ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
  set(stamp ${PROJECT_BINARY_DIR}/layers/${name})
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -DROOM=${folder} "-DSEES=${LAYER_SEES}" "-DFILES=${files}" -DROOT=${PROJECT_SOURCE_DIR}
            -P ${PROJECT_SOURCE_DIR}/cmake/check_layers.cmake
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/layers
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${files} ${PROJECT_SOURCE_DIR}/cmake/check_layers.cmake ${PROJECT_SOURCE_DIR}/cmake/layers.cmake
    VERBATIM)
  add_custom_target(layers_${name} ALL DEPENDS ${stamp})
endfunction()

vanta_layer(foundation)
vanta_layer(kernel)
vanta_layer(wave SEES foundation kernel)

vanta_layer(dsp/envelope SEES foundation kernel wave)
vanta_layer(dsp/delay SEES foundation kernel wave)
vanta_layer(dsp/detector SEES foundation kernel wave)
vanta_layer(dsp/mixer SEES foundation kernel wave)
vanta_layer(dsp/filter SEES foundation kernel wave)
vanta_layer(dsp/convolver SEES foundation kernel wave)
vanta_layer(dsp/dither SEES foundation wave)
vanta_layer(dsp/sr SEES foundation kernel wave)
vanta_layer(dsp/saturator SEES foundation kernel wave dsp/envelope dsp/mixer dsp/sr)
vanta_layer(dsp/metering SEES foundation kernel wave dsp/detector dsp/mixer dsp/filter)

vanta_layer(plugin/base SEES foundation)
vanta_layer(plugin/parameters SEES foundation wave plugin/base)
vanta_layer(plugin/presets SEES foundation plugin/base plugin/parameters)
vanta_layer(plugin/settings SEES foundation)
vanta_layer(plugin/metering SEES foundation wave)
vanta_layer(plugin/midi SEES foundation)
vanta_layer(plugin/processor SEES foundation kernel wave plugin/base plugin/parameters plugin/metering plugin/midi)
vanta_layer(plugin/model SEES foundation plugin/base plugin/parameters plugin/presets plugin/settings
            plugin/metering plugin/midi)

vanta_layer(limiter/styles SEES foundation)
vanta_layer(limiter/resources SEES foundation)
vanta_layer(limiter/modulation SEES foundation kernel wave limiter/styles)
vanta_layer(limiter/clippers SEES foundation kernel wave dsp/detector dsp/convolver)
vanta_layer(limiter/parameters SEES dsp/dither plugin/base plugin/parameters limiter/styles)
vanta_layer(limiter/latency SEES foundation dsp/sr limiter/styles limiter/resources limiter/clippers limiter/parameters)
vanta_layer(limiter/engine SEES foundation kernel wave dsp/envelope dsp/delay dsp/detector dsp/mixer dsp/filter
            dsp/convolver dsp/saturator plugin/base plugin/parameters plugin/presets limiter/styles limiter/modulation
            limiter/clippers limiter/latency)
vanta_layer(limiter/processor SEES foundation wave dsp/detector dsp/mixer dsp/filter dsp/dither dsp/sr dsp/metering
            plugin/parameters plugin/processor limiter/styles limiter/resources limiter/clippers limiter/parameters
            limiter/latency limiter/engine)
vanta_layer(limiter/model SEES foundation plugin/presets plugin/settings plugin/model limiter/parameters
            limiter/latency)
vanta_layer(limiter/factory SEES foundation plugin/presets)

vanta_layer(host/unified SEES foundation plugin/parameters plugin/processor plugin/model limiter/processor
            limiter/model limiter/factory)
vanta_layer(host/common SEES foundation plugin/base plugin/parameters plugin/midi plugin/processor plugin/model
            limiter/parameters host/unified)
vanta_layer(host/clap SEES foundation plugin/midi plugin/model host/common)
vanta_layer(host/vst3 SEES foundation plugin/midi plugin/presets plugin/model host/common)
vanta_layer(host/lv2 SEES foundation plugin/parameters plugin/midi plugin/model host/common)
vanta_layer(host/jack SEES foundation plugin/midi plugin/presets plugin/model host/common)
vanta_layer(host/offline SEES foundation kernel wave dsp/dither plugin/base plugin/parameters plugin/metering
            limiter/styles limiter/parameters limiter/processor)

vanta_layer(host/aax/standin)
vanta_layer(host/aax_host SEES foundation plugin/parameters host/unified host/common host/aax/standin host/offline)

vanta_layer(gui/artwork SEES foundation)
vanta_layer(gui/graphics SEES foundation kernel)
vanta_layer(gui/text SEES foundation gui/graphics)
vanta_layer(gui/tree SEES foundation gui/graphics)
vanta_layer(gui/animation SEES foundation gui/graphics gui/tree)
vanta_layer(gui/controls SEES foundation gui/graphics gui/tree gui/animation)
vanta_layer(gui/offscreen SEES foundation gui/graphics gui/text gui/tree gui/controls)
vanta_layer(gui/desktop SEES foundation)
vanta_layer(gui/opengl SEES foundation gui/graphics)
vanta_layer(gui/x11 SEES foundation gui/graphics gui/text gui/tree gui/animation gui/controls gui/desktop gui/opengl)

# Above the toolkit, as its editor is asked by it.
vanta_layer(host/aax SEES foundation wave plugin/base plugin/parameters plugin/settings plugin/midi plugin/processor plugin/model
            limiter/model limiter/factory host/unified host/common host/aax/standin gui/graphics gui/tree gui/controls)

vanta_layer(interface/meters SEES foundation wave gui/graphics gui/tree gui/animation gui/controls)
vanta_layer(interface/loudness SEES foundation wave plugin/parameters limiter/parameters gui/graphics gui/tree
            gui/animation gui/controls interface/meters)
vanta_layer(interface/display SEES foundation wave plugin/metering limiter/parameters gui/graphics gui/tree gui/animation
            gui/controls interface/meters)
vanta_layer(interface/page SEES foundation wave plugin/parameters plugin/metering limiter/parameters gui/artwork
            gui/graphics gui/tree gui/animation gui/controls interface/meters interface/loudness interface/display)

vanta_layer(interface/binding SEES foundation plugin/base plugin/parameters plugin/settings plugin/model gui/graphics gui/tree
            gui/animation gui/controls)
vanta_layer(interface/controls SEES foundation plugin/base plugin/parameters plugin/model gui/graphics gui/tree
            gui/animation gui/controls interface/binding)
vanta_layer(interface/hints SEES foundation plugin/settings gui/graphics gui/tree gui/animation gui/controls)
vanta_layer(interface/menus SEES foundation plugin/presets plugin/settings plugin/model gui/graphics gui/tree gui/controls)
vanta_layer(interface/midi SEES foundation plugin/parameters plugin/midi plugin/model gui/graphics gui/tree gui/animation
            gui/controls interface/binding interface/controls interface/menus)
vanta_layer(interface/frame SEES foundation plugin/base plugin/parameters plugin/presets plugin/settings plugin/midi
            plugin/model gui/graphics gui/tree gui/animation gui/controls interface/binding interface/controls
            interface/hints interface/menus interface/midi)

vanta_layer(interface/layout SEES foundation wave plugin/base plugin/parameters plugin/metering plugin/model
            limiter/parameters limiter/model gui/artwork gui/graphics gui/tree gui/animation gui/controls interface/meters
            interface/loudness interface/display interface/binding interface/controls interface/hints interface/menus
            interface/frame)

# The interface inside hosts; the formats know no more of it than host/common says.
vanta_layer(host/editor SEES foundation plugin/settings plugin/model limiter/model host/common gui/graphics gui/tree gui/x11
            interface/binding interface/frame interface/layout)

vanta_layer(plot SEES foundation plugin/metering limiter/parameters host/offline gui/graphics gui/tree gui/offscreen
            interface/page)
vanta_layer(audiofile/chunks SEES foundation)
vanta_layer(audiofile/alac SEES foundation audiofile/chunks)
vanta_layer(audiofile SEES foundation audiofile/chunks audiofile/alac)
vanta_layer(audiofile/metadata SEES foundation audiofile/chunks audiofile)
vanta_layer(measure SEES foundation kernel dsp/metering audiofile)
vanta_layer(mastering SEES foundation plugin/parameters limiter/styles host/offline audiofile audiofile/metadata measure)
vanta_layer(cli SEES foundation plugin/parameters plugin/presets plugin/settings plugin/model
            limiter/styles limiter/parameters limiter/model limiter/factory host/aax_host host/offline plot audiofile
            measure mastering)
vanta_layer(app SEES cli)
vanta_layer(app/clap SEES host/clap host/editor)
vanta_layer(app/vst3 SEES host/vst3 host/editor)
vanta_layer(app/lv2 SEES host/lv2 host/editor)
vanta_layer(app/aax SEES plugin/model host/common host/aax/standin host/aax host/editor gui/graphics gui/tree gui/x11
            interface/binding)
vanta_layer(app/gallery SEES foundation gui/artwork gui/graphics gui/text gui/tree gui/animation gui/controls gui/offscreen gui/x11)
vanta_layer(app/player SEES foundation limiter/model host/common host/jack audiofile)
vanta_layer(app/scope SEES foundation plugin/parameters plugin/metering plugin/model limiter/parameters limiter/model
            host/common host/offline gui/graphics gui/tree gui/animation gui/opengl gui/x11 interface/page
            mastering plot cli app/player)
vanta_layer(app/window SEES foundation plugin/parameters plugin/settings plugin/model limiter/factory limiter/model host/common
            host/jack gui/graphics gui/tree gui/controls gui/offscreen gui/opengl gui/x11 interface/binding
            interface/controls interface/frame interface/layout audiofile mastering cli
            app/player)
vanta_layer(app/jack SEES foundation plugin/model host/common host/jack gui/x11 cli app/window)

vanta_layer(tools/song SEES foundation)
vanta_layer(tools/compile_artwork SEES foundation)
vanta_layer(tools/man_page SEES foundation)
vanta_layer(tools/compile_styles SEES foundation limiter/styles)
vanta_layer(tools/compile_presets SEES foundation plugin/base plugin/parameters plugin/presets limiter/parameters
            limiter/model)
vanta_layer(tools/lv2_bundle SEES foundation plugin/base plugin/parameters plugin/presets plugin/model limiter/parameters
            limiter/model limiter/factory host/common host/lv2)
vanta_layer(tools/preset_table SEES plugin/presets limiter/model limiter/factory host/offline measure
            tools/song)

# Tests may see whatever they test, and nothing above it.
set(signal_rooms foundation kernel wave
    dsp/envelope dsp/delay dsp/detector dsp/mixer dsp/filter dsp/convolver dsp/dither dsp/sr dsp/saturator dsp/metering)
set(plugin_rooms plugin/base plugin/parameters plugin/presets plugin/settings plugin/metering plugin/midi
    plugin/processor plugin/model)
set(limiter_rooms limiter/styles limiter/resources limiter/modulation limiter/clippers limiter/parameters
    limiter/latency limiter/engine limiter/processor limiter/model limiter/factory)
set(host_rooms host/unified host/common host/clap host/vst3 host/lv2 host/jack host/offline host/aax/standin host/aax_host
    host/aax)
set(gui_rooms gui/artwork gui/graphics gui/text gui/tree gui/animation gui/controls gui/desktop gui/offscreen gui/opengl
    gui/x11)
set(interface_rooms interface/meters interface/loudness interface/display interface/page interface/binding
    interface/controls interface/hints interface/menus interface/midi interface/frame interface/layout)
set(file_rooms audiofile/chunks audiofile/alac audiofile audiofile/metadata measure mastering)

vanta_layer(tests/support SEES foundation wave limiter/styles limiter/engine limiter/processor)
vanta_layer(tests/foundation SEES foundation tests/support)
vanta_layer(tests/kernel SEES kernel tests/support)
vanta_layer(tests/wave SEES foundation kernel wave tests/support)
vanta_layer(tests/dsp SEES ${signal_rooms} limiter/clippers limiter/engine tests/support)
vanta_layer(tests/plugin SEES foundation wave ${plugin_rooms} tests/support)
vanta_layer(tests/limiter SEES ${signal_rooms} ${plugin_rooms} ${limiter_rooms} tests/support tests/plugin)
vanta_layer(tests/conformance SEES ${signal_rooms} ${plugin_rooms} ${limiter_rooms} ${host_rooms} measure tools/song
            tests/support)
vanta_layer(tests/realtime SEES ${signal_rooms} ${plugin_rooms} ${limiter_rooms} tests/support)
vanta_layer(tests/host SEES foundation ${plugin_rooms} ${limiter_rooms} ${host_rooms} tests/support tests/plugin)
vanta_layer(tests/host/formats SEES foundation ${plugin_rooms} ${limiter_rooms} ${host_rooms} cli tests/support
            tests/plugin)
vanta_layer(tests/host/clap SEES foundation host/common host/clap tests/support tests/plugin tests/host/formats)
vanta_layer(tests/host/vst3 SEES foundation host/common host/vst3 tests/support tests/plugin tests/host/formats)
vanta_layer(tests/host/lv2 SEES foundation ${plugin_rooms} ${limiter_rooms} host/common host/lv2 host/offline tests/support
            tests/plugin tests/host/formats)
vanta_layer(tests/host/aax SEES foundation ${plugin_rooms} ${limiter_rooms} gui/graphics gui/tree gui/controls host/unified
            host/common host/offline host/aax/standin host/aax_host host/aax tests/support tests/plugin tests/host/formats)
vanta_layer(tests/host/jack SEES foundation plugin/midi host/common host/jack tests/support tests/plugin)
vanta_layer(tests/gui SEES foundation ${gui_rooms} app/gallery tests/support)
vanta_layer(tests/host/windows SEES foundation plugin/settings host/common gui/tree gui/x11 tests/support tests/plugin
            tests/host/formats tests/host/clap tests/host/vst3 tests/gui)
vanta_layer(tests/interface SEES foundation wave dsp/metering ${plugin_rooms} ${limiter_rooms} host/unified gui/artwork
            gui/graphics gui/text gui/tree gui/animation gui/controls gui/offscreen gui/x11 ${interface_rooms} tests/support
            tests/plugin tests/host tests/gui)
vanta_layer(tests/audiofile SEES foundation audiofile/chunks audiofile audiofile/metadata tests/support)
vanta_layer(tests/fuzz SEES ${signal_rooms} ${plugin_rooms} ${limiter_rooms} gui/graphics tests/support tests/plugin)
vanta_layer(tests/interface/display SEES foundation wave ${plugin_rooms} limiter/parameters limiter/model host/common
            gui/artwork gui/graphics gui/text gui/tree gui/animation gui/controls gui/offscreen gui/opengl gui/x11
            ${interface_rooms} tests/gui tests/support)
vanta_layer(tests/measure SEES foundation audiofile measure tests/support)
vanta_layer(tests/mastering SEES foundation host/offline ${file_rooms} tools/song tests/support)
vanta_layer(tests/cli SEES foundation ${plugin_rooms} ${limiter_rooms} ${host_rooms} ${file_rooms} cli tools/song
            tests/support tests/plugin)
vanta_layer(bench SEES ${signal_rooms} plugin/metering plugin/model limiter/styles limiter/engine limiter/processor
            limiter/model host/common ${gui_rooms} interface/display interface/layout app/gallery measure tests/support
            tests/plugin tests/gui)
vanta_layer(bench/compare SEES ${signal_rooms} ${plugin_rooms} limiter/styles limiter/parameters host/common tools/song
            tests/support bench)

# What the product says of itself wherever it is installed: plug-ins, manual, desktop. Said here and nowhere else.
set(VANTA_PRODUCT_NAME "Vanta 2")
set(VANTA_VENDOR "Quillmark")
set(VANTA_SUMMARY "Mastering limiter with true-peak limiting and loudness metering")
set(VANTA_DESCRIPTION "Vanta 2 holds the ceiling whatever it is fed, in eight styles, with look-ahead, true-peak \
limiting, oversampling to 32x, channel linking up to 7.1.2, an external side chain and dither. It runs in hosts as an LV2, \
CLAP or VST3 plug-in, on its own as a client of JACK, and as a command that limits and measures audio files.")
set(VANTA_LICENSE "LicenseRef-proprietary")
set(VANTA_ID "com.quillmark.vanta2")
set(VANTA_URI "urn:quillmark:vanta2")

# What VST3 asks for besides. Sessions find the plug-in by the class: it stays as it is.
set(VANTA_VST3_CLASS_ID "10C8D8F3EE7A50BEBD90F6CD8E7C9CCE")
set(VANTA_VST3_CATEGORIES "Fx|Dynamics|Mastering")
set(VANTA_VST3_SDK_VERSION "VST 3.7.4")

# What the help menu opens. The domain is reserved for examples: put the real one here before a release.
set(VANTA_WEB_SITE "https://www.quillmark.example/vanta2")
set(VANTA_WEB_SUPPORT "https://www.quillmark.example/support")
set(VANTA_WEB_MANUAL "https://www.quillmark.example/vanta2/manual")
# What AAX asks for besides: the maker and the plug-in in four characters each, and the start of the effect's name. The same
# holds for them.
set(VANTA_AAX_MANUFACTURER "Qmrk")
set(VANTA_AAX_CODE "Vn2p")
set(VANTA_AAX_DOMAIN "com.quillmark.")

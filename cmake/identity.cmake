# What the product says of itself wherever it is installed: plug-ins, manual, desktop. Said here and nowhere else.
set(VANTA_PRODUCT_NAME "Vanta 2")
set(VANTA_VENDOR "Quillmark")
set(VANTA_SUMMARY "Mastering limiter with true-peak limiting and loudness metering")
set(VANTA_LICENSE "LicenseRef-proprietary")
set(VANTA_ID "com.quillmark.vanta2")
set(VANTA_URI "urn:quillmark:vanta2")

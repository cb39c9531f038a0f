# Sanitizer builds: ASan+UBSan for the Qt-free layers and their tests,
# TSan for the sound engines' threads.
if(SONMETRA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
if(SONMETRA_TSAN)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()
if(SONMETRA_FUZZ)
  # Coverage and sanitizers in every library the fuzz targets link, so that
  # libFuzzer sees inside the readers.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# What every target of this project is built with.
add_library(framework_service_options INTERFACE)
target_compile_options(framework_service_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${FRAMEWORK_SERVICE_WERROR}>:-Werror>)

if(FRAMEWORK_SERVICE_SANITIZE)
    add_compile_options(-fsanitize=${FRAMEWORK_SERVICE_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${FRAMEWORK_SERVICE_SANITIZE})
endif()

if(FRAMEWORK_SERVICE_FUZZ)
    # The fuzzers steer by what they reach in the libraries too.
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
endif()

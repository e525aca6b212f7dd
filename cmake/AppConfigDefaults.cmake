# Build-time defaults of the outside services. They point at the stand-in services
# (tools/services) on loopback; packagers override them with -D, users with the
# configuration file or the environment (docs/configuration.md).
set(ZORVANE_DEFAULT_GATEWAY_HOST "127.0.0.1" CACHE STRING "Speech gateway host")
set(ZORVANE_DEFAULT_GATEWAY_CONTROL_PORT "9721" CACHE STRING "Speech gateway control port")
set(ZORVANE_DEFAULT_BACKEND_URL "http://127.0.0.1:9722" CACHE STRING "Vendor backend base URL")
set(ZORVANE_DEFAULT_IFLY_URL "ws://127.0.0.1:9723/v2/iat" CACHE STRING "iFly dictation web socket URL")
set(ZORVANE_DEFAULT_TRANSLATE_URL "http://127.0.0.1:9724" CACHE STRING "Translation service base URL")
set(ZORVANE_DEFAULT_TOKEN_URL "http://127.0.0.1:9725" CACHE STRING "Speech synthesis token service base URL")
set(ZORVANE_DEFAULT_SYNTHESIS_URL "http://127.0.0.1:9726" CACHE STRING "Speech synthesis service base URL")
set(ZORVANE_DEFAULT_IP_LOOKUP_URL "http://127.0.0.1:9727" CACHE STRING "IP lookup service base URL")
set(ZORVANE_DEFAULT_SEARCH_URL "http://127.0.0.1:9728" CACHE STRING "Web search page base URL")
set(ZORVANE_DEFAULT_PRODUCT_SITE_URL "http://127.0.0.1:9722/" CACHE STRING "Product web site")
set(ZORVANE_DEFAULT_CONTACT_PAGE_URL "http://127.0.0.1:9722/contact" CACHE STRING "Contact page")
# Credentials accepted by the stand-in services only. Real ones never go into the source tree.
# The program never sends one of these values to a host outside this machine.
set(ZORVANE_STANDIN_IFLY_APP_ID "5a1d0c3e")
set(ZORVANE_STANDIN_IFLY_API_KEY "0123456789abcdef0123456789abcdef")
set(ZORVANE_STANDIN_IFLY_API_SECRET "fedcba9876543210fedcba9876543210")
set(ZORVANE_STANDIN_TRANSLATE_APP_ID "20260000000000001")
set(ZORVANE_STANDIN_TRANSLATE_KEY "StandInTranslateKey0")
set(ZORVANE_STANDIN_TOKEN_CLIENT_ID "StandInClientId000000000")
set(ZORVANE_STANDIN_TOKEN_CLIENT_SECRET "StandInClientSecret0000000000000")
set(ZORVANE_STANDIN_SYNTHESIS_CUID "zorvanecu")
set(ZORVANE_DEFAULT_IFLY_APP_ID "${ZORVANE_STANDIN_IFLY_APP_ID}" CACHE STRING "iFly app id")
set(ZORVANE_DEFAULT_IFLY_API_KEY "${ZORVANE_STANDIN_IFLY_API_KEY}" CACHE STRING "iFly API key")
set(ZORVANE_DEFAULT_IFLY_API_SECRET "${ZORVANE_STANDIN_IFLY_API_SECRET}" CACHE STRING "iFly API secret")
set(ZORVANE_DEFAULT_TRANSLATE_APP_ID "${ZORVANE_STANDIN_TRANSLATE_APP_ID}" CACHE STRING "Translation app id")
set(ZORVANE_DEFAULT_TRANSLATE_KEY "${ZORVANE_STANDIN_TRANSLATE_KEY}" CACHE STRING "Translation key")
set(ZORVANE_DEFAULT_TOKEN_CLIENT_ID "${ZORVANE_STANDIN_TOKEN_CLIENT_ID}" CACHE STRING "Synthesis token client id")
set(ZORVANE_DEFAULT_TOKEN_CLIENT_SECRET "${ZORVANE_STANDIN_TOKEN_CLIENT_SECRET}" CACHE STRING
    "Synthesis token client secret")
set(ZORVANE_DEFAULT_SYNTHESIS_CUID "${ZORVANE_STANDIN_SYNTHESIS_CUID}" CACHE STRING "Synthesis client identifier")
set(ZORVANE_DEFAULT_DEVICE_VIRTUAL_SOCKET "" CACHE STRING "Virtual device socket; empty for the real mouse")

# One page of the manual: PAGE (Markdown) -> HTML, with links to pages instead of to their sources.
execute_process(COMMAND ${CMARK} -e table ${PAGE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"([a-z]+)\\.md\"" "href=\"\\1.html\"" body "${body}")
string(REGEX MATCH "<h1>([^<]*)</h1>" heading "${body}")
set(title "${CMAKE_MATCH_1}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/page.html.in ${HTML} @ONLY)

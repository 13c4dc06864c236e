# Has the desktop program draw the pictures of the user guide. A guide without pictures is still one,
# so that a machine on which nothing can be drawn gets a warning and no failure.
# Usage: cmake -D PROGRAM=… -D FOLDER=… -D WORK=… -P GuidePictures.cmake

set(pictures
  empty-portfolio empty-portfolio-light
  form-transaction-buy form-transaction-buy-1000x640-light
  holdings portfolio-1-retirement-holdings-light
  gains portfolio-1-retirement-gains-light
  equity equity-1-cto60-overview-1y-light
  scenario equity-1-cto60-scenario-light
  all-portfolios reports-all-portfolios-1000x640-light
  returns reports-returns-1000x640-light
  tax-year reports-tax-year-1000x640-light
  income reports-income-1000x640-light
  coverage reports-coverage-1000x640-light
)

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/home" "${FOLDER}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -E env --unset=DISPLAY --unset=XDG_CONFIG_HOME --unset=XDG_CACHE_HOME
          "HOME=${WORK}/home" "TMPDIR=${WORK}" QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
          TZ=America/Toronto
          "${PROGRAM}" --sample-market --render "${WORK}/screens" --size 1100x720
  OUTPUT_QUIET ERROR_VARIABLE words RESULT_VARIABLE status)
while(pictures)
  list(POP_FRONT pictures name screen)
  if(EXISTS "${WORK}/screens/${screen}.png")
    file(COPY_FILE "${WORK}/screens/${screen}.png" "${FOLDER}/${name}.png")
  else()
    message(WARNING "The user guide lacks its picture “${name}” (status ${status}).\n${words}")
  endif()
endwhile()
file(REMOVE_RECURSE "${WORK}")

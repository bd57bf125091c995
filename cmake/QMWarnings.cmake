# Warnings for the project's own targets.
function(qm_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wno-unused-parameter -Wno-missing-field-initializers)
endfunction()

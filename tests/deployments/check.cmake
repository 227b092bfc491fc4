# cmake -DSOURCE=... -DFILE=... -P check.cmake: the check that configuring makes, alone.
include(${SOURCE}/deployments/Deployment.cmake)
marovenda_check_deployment("${FILE}")

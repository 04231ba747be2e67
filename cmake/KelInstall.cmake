# What a host needs: the libraries, the default plug-in beside them, the host program, the public headers under the
# path that includes are written with, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS kelcommon13r kelparsexml13r keltransformr kelscoring20r
  EXPORT KelScoringTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS torvane20r LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS kelscore RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(kel_public_headers
  scoring/common/IKelEncoder.h
  scoring/common/IKelScore.h
  scoring/common/IKelScoreParser.h
  scoring/common/IKelSettingValue.h
  scoring/common/IKelVariable.h
  scoring/common/KelCatVar.h
  scoring/common/KelDiagnostics.h
  scoring/common/KelDisplay.h
  scoring/common/KelDynamicLoadedLibrary.h
  scoring/common/KelExport.h
  scoring/common/KelMV.h
  scoring/common/KelScoringConst.h
  scoring/common/KelSettings.h
  scoring/common/KelStatus.h
  scoring/common/KelTransformation.h
  scoring/common/KelVarList.h
  scoring/common/KelVecValue.h
  scoring/common/KelXInputSource.h
  scoring/common/ProgressReport.h
  scoring/common/Value.h
  scoring/common/ValueRecord.h
  scoring/common/XMLElement.h
  scoring/factory/ScoringFactory.h
  scoring/factory/ScoringModelAttr.h
  scoring/factory/ScoringScorerFactory.h
  scoring/model/ScoringAbsModel.h
  scoring/model/ScoringBaseScorer.h
  scoring/model/ScoringModel.h
  scoring/model/ScoringMutex.h
  scoring/model/ScoringReporter.h
  scoring/model/ScoringSplitModel.h
  scoring/pmml/ScoringBaseParser.h
  scoring/pmml/ScoringPMMLParser.h
  scoring/pmml/ScoringSAX2Handler.h
  scoring/text/ScoringStr.h
  scoring/text/ScoringTranscoder.h)
foreach(header IN LISTS kel_public_headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

set(kel_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KelScoring)
install(EXPORT KelScoringTargets NAMESPACE KelScoring:: DESTINATION ${kel_package_dir})
configure_package_config_file(cmake/KelScoringConfig.cmake.in ${PROJECT_BINARY_DIR}/KelScoringConfig.cmake
  INSTALL_DESTINATION ${kel_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KelScoringConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/KelScoringConfig.cmake
  ${PROJECT_BINARY_DIR}/KelScoringConfigVersion.cmake
  DESTINATION ${kel_package_dir})

configure_file(cmake/kelscoring.pc.in ${PROJECT_BINARY_DIR}/kelscoring.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kelscoring.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

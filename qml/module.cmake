# The views as the QML module Vesk 1.0. Included from the top, because the module's generated files belong to
# the directory of their target.
set(vesk_singletons App Theme)
set(vesk_views
  AboutMenuBar AboutText AboutView AdjTextField AdjustmentRow AllTakesRecordedDialog Banner BannerText
  BrefBanner BrefModeRow BrefSlotsFullDialog CameraAcqControl CameraAcqSettings CameraConnectDialog
  CameraConnectMenuItem CameraControlBar CameraControlView CameraDisconnectMenuItem
  CameraFrameBufferControl CameraFWControl CameraIOControl CameraIOPane CameraMainControl CameraMenuBar
  CameraNameEditDialog CameraTab CameraTabSsdRow CollapsiblePane ColorAdjControl ColorAdjRow ComboRow
  ConfirmDialog ControlBarBackground ControlBarEdge ControlBarFlickable ControlButton ControlComboBox
  ControlGrid ControlRow ControlValueRow DialogButton DialogFooter DialogForm DialogLabel DialogLoader
  DialogWindow EditableValueRow ElidedLabel ExitMenuItem FieldEdit FileDialogLoader FlatTextField
  FocusButtons FocusFollower FrameField FWUpdateDialog HelpMenu Icon IconButton IconMenuItem ImgAdjControl
  ImgAdjRow ImgFrameScrollBar ImgFrameView ImgSearchControl ImgToolsControl IOSpinBox IOTimingRow
  LensInfoControl LensShutterControl ListBox LogSlider MainWindow MarkerButton NumberField NumberRow
  PartitionDialog PixelReadout PlainComboBox PlaybackCameraControl PlaybackControl PlaybackControlBar
  PlaybackFrameRow PlaybackInfoRows PlaybackPane PlaybackScrubber PlaybackSearchRow PlaybackSettings
  PlaybackTimeline PlaybackTransport PlaybackView PlayButton PositiveValidator PressButton RadioMenuItem
  RecordingInfoControl RefusalDialog SaveActions SaveBanner SaveButton SaveCell SaveChoice SaveColumns
  SaveDestinationPane SaveDialog SaveDialogLoader SaveForm SaveFormatPane SaveFrameField SaveFrameRate
  SaveHeaderCell SaveLabel SaveMenuItem SaveNameField SaveProgressHeader SaveProgressRow SaveProgressView
  SaveQuality SaveRange SaveSourcePane SaveStatus SaveTarget SaveValue ScrubberMarker ScrubberPlayHead
  SkipButton SourceDialogs SourceTabBox SsdAutosaveControl SsdAutosaveNameEditDialog SsdControl
  SsdFormatDialog SsdLsHeader SsdLsHeaderCell SsdLsRow SsdLsView SsdTakeCloseMenuItem SsdTakeControlBar
  SsdTakeMenuBar SsdTakeOpenDialog SsdTakeOpenLoader SsdTakeOpenMenuItem SsdTakeTab SsdTakeView
  TabBarButton TabBox TakeControlBar TakeDeleteDialog TakeDeleteMenuItem TakeDeletion TakeInfoControl
  TakeLockedDialog TakeMenuBar TakesDeleteAllDialog TakesDeleteAllMenuItem TakeTab TakeTabBox TakeView
  TransformButton TransportButton UnitsComboBox UnitsComboField UnitsComboRow UnitsTextField VeskButton
  VeskFileCloseMenuItem VeskFileControlBar VeskFileMenuBar VeskFileOpenDialog VeskFileOpenMenuItem
  VeskFileTab VeskFileView VeskMenuBar VeskSlider VeskSpinBox VeskTabBar VideoControl ViewMenu
  WholeNumberValidator
  ZoomMenuItem)

set(vesk_qml_files)
foreach(view IN LISTS vesk_singletons vesk_views)
  set(file ${CMAKE_CURRENT_LIST_DIR}/${view}.qml)
  set_source_files_properties(${file} PROPERTIES QT_RESOURCE_ALIAS ${view}.qml)
  if(view IN_LIST vesk_singletons)
    set_source_files_properties(${file} PROPERTIES QT_QML_SINGLETON_TYPE TRUE)
  endif()
  list(APPEND vesk_qml_files ${file})
endforeach()

qt_add_qml_module(vesk-core
  URI Vesk
  VERSION 1.0
  NO_PLUGIN
  OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/Vesk
  RESOURCE_PREFIX /qt/qml
  DEPENDENCIES QtQuick
  QML_FILES ${vesk_qml_files})
# The code generated from a view is small behind its headers, so that a dozen of them compile as fast as one.
set_target_properties(vesk-core PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
set(number 0)
foreach(view IN LISTS vesk_singletons vesk_views)
  math(EXPR group "${number} / 12")
  math(EXPR number "${number} + 1")
  set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/.rcc/qmlcache/vesk-core_qml/${view}_qml.cpp
    PROPERTIES UNITY_GROUP views${group})
endforeach()
# The registration includes the headers of the types by their bare names.
target_include_directories(vesk-core PRIVATE
  ${PROJECT_SOURCE_DIR}/app ${PROJECT_SOURCE_DIR}/camera ${PROJECT_SOURCE_DIR}/take ${PROJECT_SOURCE_DIR}/image
  ${PROJECT_SOURCE_DIR}/save ${PROJECT_SOURCE_DIR}/file)

# The root document, which lies outside of the module: qrc:/main.qml.
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/main.qml PROPERTIES QT_RESOURCE_ALIAS main.qml)
qt_target_qml_sources(vesk-core PREFIX / QML_FILES ${CMAKE_CURRENT_LIST_DIR}/main.qml)

qt_add_resources(vesk-core vesk_controls_conf
  PREFIX / BASE ${CMAKE_CURRENT_LIST_DIR}
  FILES ${CMAKE_CURRENT_LIST_DIR}/qtquickcontrols2.conf)

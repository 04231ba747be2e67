#pragma once

#include <cstdint>

/// The vocabulary in which hosts, library and plug-ins meet: kinds of model, status codes, settings keys, names of
/// outputs and the names of PMML. Texts are constants of static storage; they need no initialisation and no library.
namespace KelScoring_20::KelScoringConst {

/// The kinds of model. Each but 0 is named after its PMML element.
enum ModelType : std::int32_t {
  UnknownModel = 0,  ///< no element, or one outside this table
  AssociationModel = 1,
  ClusteringModel = 2,
  GeneralRegressionModel = 3,
  MiningModel = 4,
  NaiveBayesModel = 5,
  NeuralNetwork = 6,
  RegressionModel = 7,
  RuleSetModel = 8,
  SequenceModel = 9,
  SupportVectorMachineModel = 10,
  TextModel = 11,
  TimeSeriesModel = 12,
  TreeModel = 13,
  BayesNetModel = 14,
  NearestNeighborModel = 15,
};

// Status codes. All are errors but kPrescanIncomplete, which is a warning.

inline constexpr long kXmlPlatformFailed = 103;          ///< the XML platform or its parser couldn't be started
inline constexpr long kXmlParseFailed = 104;             ///< the text couldn't be parsed
inline constexpr long kWrongRootElement = 105;           ///< no root element, or one of another name
inline constexpr long kRequiredAttributeMissing = 108;   ///< "name" or "optype" of a field, "name" of a parameter
inline constexpr long kMalformedField = 109;             ///< an unknown "dataType" or a malformed "Interval"
inline constexpr long kVariableRefused = 111;            ///< the variable list refused a variable
inline constexpr long kFactoryHoldsModel = 260002;       ///< the factory already holds a model
inline constexpr long kFilesOrModelIDsMissing = 260003;  ///< no usable file name, or no identifiers for several files
inline constexpr long kFileNotOpened = 260004;           ///< a PMML file can't be opened
inline constexpr long kModelDllMissing = 260005;         ///< no setting "modelDll"
inline constexpr long kScoringDllMissing = 260006;       ///< no setting "scoringDll"
inline constexpr long kPrescanIncomplete = 260007;       ///< warning: the prescan of the document did not complete
inline constexpr long kNothingToScoreWith = 260009;      ///< no scorer, no member, or no member for a split key
inline constexpr long kNoScorer = 260010;           ///< no scorer could be had, or no model element in the document
inline constexpr long kNotImplemented = 260016;     ///< a scorer lacks the operation, or there is no network
inline constexpr long kNoPropensity = 260017;       ///< record, target or prediction can't give a propensity
inline constexpr long kNetworkMalformed = 260023;   ///< the propensity network's vectors differ in length
inline constexpr long kSplitFieldMissing = 260027;  ///< a split field is not in the input record
inline constexpr long kStreamsWithoutModelIDs = 260028;  ///< several streams, and nothing says what they are

// Settings keys that the library reads or writes.

inline constexpr char kSettingEncoding[] =
    "encoding";  ///< text, default "UTF-8": the encoding that text from a document is converted to
inline constexpr char kSettingScoringDll[] =
    "scoringDll";  ///< nested: model element or "Torvane" -> base name of a plug-in
inline constexpr char kSettingModelDll[] =
    "modelDll";  ///< nested: the entries' names are the elements that count as a model
inline constexpr char kSettingVersionSupported[] =
    "versionSupported";  ///< text, default "4.0": the version whose plug-in is chosen by model element
inline constexpr char kSettingScoringPmmlFiles[] = "scoring_pmmlFiles";  ///< texts: paths of PMML files
inline constexpr char kSettingScoringModelIDs[] =
    "scoring_modelIDs";  ///< texts: identifiers of the members of an ensemble
inline constexpr char kSettingScoringSplitModel[] = "scoring_splitModel";  ///< nested: description of a split model
inline constexpr char kSettingScoringSplitFields[] =
    "scoring_splitFields";  ///< texts, inside the former: split fields in key order
inline constexpr char kSettingScoringSplitModelIDs[] =
    "scoring_splitModelIDs";  ///< texts, likewise: members; each is also an entry that holds the key
inline constexpr char kSettingScoringVersion[] = "scoring_version";      ///< text, written: the document's version
inline constexpr char kSettingScoringModelType[] = "scoring_modelType";  ///< text, written: the model's element
inline constexpr char kSettingScoringMultipleModelMethod[] =
    "scoring_multipleModelMethod";  ///< text, written: method of the ensemble
inline constexpr char kSettingScoringNeedDerivedPredictor[] =
    "scoring_needDerivedPredictor";  ///< bool: compute all derived fields into the record

/// The entry of "scoringDll" for the default plug-in.
inline constexpr char kDefaultPlugIn[] = "Torvane";

// Option names of the family. They pass through the library.

inline constexpr char kOptionMissingValuePolicy[] = "missingValuePolicy";
inline constexpr char kOptionMaxPredictions[] = "maxPredictions";
inline constexpr char kOptionMaxCategories[] = "maxCategories";
inline constexpr char kOptionScoreValue[] = "scoreValue";
inline constexpr char kOptionIsOutputInputData[] = "isOutputInputData";
inline constexpr char kOptionIsOutputAll[] = "isOutputAll";
inline constexpr char kOptionIsPrediction[] = "isPrediction";
inline constexpr char kOptionIsProbability[] = "isProbability";
inline constexpr char kOptionIsProbabilityCategory[] = "isProbabilityCategory";
inline constexpr char kOptionIsConfidence[] = "isConfidence";
inline constexpr char kOptionIsStandardDeviation[] = "isStandardDeviation";
inline constexpr char kOptionIsPropensity[] = "isPropensity";
inline constexpr char kOptionIsRawPropensity[] = "isRawPropensity";
inline constexpr char kOptionIsNodeID[] = "isNodeID";
inline constexpr char kOptionIsCumHazard[] = "isCumHazard";
inline constexpr char kOptionIsNeighbor[] = "isNeighbor";
inline constexpr char kOptionIsDistance[] = "isDistance";
inline constexpr char kOptionIsOthers[] = "isOthers";
inline constexpr char kOptionIsEnsemble[] = "isEnsemble";
inline constexpr char kOptionIsBaseModels[] = "isBaseModels";
inline constexpr char kOptionIsReferenceModel[] = "isReferenceModel";
inline constexpr char kOptionResultType[] = "resultType";
inline constexpr char kOptionNamePattern[] = "namePattern";
inline constexpr char kOptionResolveNameConflict[] = "resolveNameConflict";
inline constexpr char kOptionNameList[] = "nameList";
inline constexpr char kOptionLabelPattern[] = "labelPattern";
inline constexpr char kOptionUseNameList[] = "useNameList";
inline constexpr char kOptionEnableSQL[] = "enableSQL";
inline constexpr char kOptionConfidenceBasedOn[] = "confidenceBasedOn";
inline constexpr char kOptionOnProbability[] = "onProbability";
inline constexpr char kOptionOnIncrease[] = "onIncrease";
inline constexpr char kOptionScoringSplitValues[] = "scoring_splitValues";

// Output keys: the names of the values in the output records of `Score` and `Scorable`.

inline constexpr char kOutputPrediction[] = "prediction";
inline constexpr char kOutputProbability[] = "probability";
inline constexpr char kOutputRawPropensity[] = "rawpropensity";
inline constexpr char kOutputAdjustedPropensity[] = "adjustedpropensity";

inline constexpr char kOutputProbCategory[] = "probcategory";
inline constexpr char kOutputConfidence[] = "confidence";
inline constexpr char kOutputStdDev[] = "stddev";
inline constexpr char kOutputAdvice[] = "advice";
inline constexpr char kOutputTreeNodestats[] = "tree-nodestats";
inline constexpr char kOutputTreeNodeid[] = "tree-nodeid";
inline constexpr char kOutputKnnDescriptor[] = "knn-descriptor";
inline constexpr char kOutputKnnCaseid[] = "knn-caseid";
inline constexpr char kOutputKnnDistance[] = "knn-distance";
inline constexpr char kOutputKnnCaselabel[] = "knn-caselabel";
inline constexpr char kOutputCoxCumhazard[] = "cox-cumhazard";
inline constexpr char kOutputCoxDeadstring[] = "cox-deadstring";
inline constexpr char kOutputAssocAssociationrule[] = "assoc-associationrule";
inline constexpr char kOutputAssocConsequentdescriptor[] = "assoc-consequentdescriptor";
inline constexpr char kOutputAssocItem[] = "assoc-item";
inline constexpr char kOutputAssocSupport[] = "assoc-support";
inline constexpr char kOutputAssocConfidence[] = "assoc-confidence";
inline constexpr char kOutputAssocLift[] = "assoc-lift";
inline constexpr char kOutputAssocAntecedent[] = "assoc-antecedent";
inline constexpr char kOutputAssocConsequent[] = "assoc-consequent";
inline constexpr char kOutputAssocruleDescriptor[] = "assocrule-descriptor";
inline constexpr char kOutputAssocruleConsequent[] = "assocrule-consequent";
inline constexpr char kOutputAssocruleRuleid[] = "assocrule-ruleid";
inline constexpr char kOutputAssocruleSortcriterion[] = "assocrule-sortcriterion";
inline constexpr char kOutputAssocruleCriterionvalue[] = "assocrule-criterionvalue";
inline constexpr char kOutputSequentialSeqconsequentdescriptor[] = "sequential-seqconsequentdescriptor";
inline constexpr char kOutputSequentialItem[] = "sequential-item";
inline constexpr char kOutputSequentialConfidence[] = "sequential-confidence";
inline constexpr char kOutputSequentialSupport[] = "sequential-support";
inline constexpr char kOutputSequentialCause[] = "sequential-cause";
inline constexpr char kOutputAnomalyClusterid[] = "anomaly-clusterid";
inline constexpr char kOutputAnomalyClustersize[] = "anomaly-clustersize";
inline constexpr char kOutputAnomalyClustersizeProportion[] = "anomaly-clustersizeProportion";
inline constexpr char kOutputAnomalyAnomvarinfo[] = "anomaly-anomvarinfo";
inline constexpr char kOutputAnomalyVarname[] = "anomaly-varname";
inline constexpr char kOutputAnomalyVarvalue[] = "anomaly-varvalue";
inline constexpr char kOutputAnomalyNormvalue[] = "anomaly-normvalue";
inline constexpr char kOutputAnomalyAvrimpact[] = "anomaly-avrimpact";
inline constexpr char kOutputClusteringClusterid[] = "clustering-clusterid";
inline constexpr char kOutputRulesetIdfire[] = "ruleset-idfire";
inline constexpr char kOutputSelflearningDescriptor[] = "selflearning-descriptor";
inline constexpr char kOutputSelflearningModelname[] = "selflearning-modelname";
inline constexpr char kOutputSelflearningSecondcatprob[] = "selflearning-secondcatprob";
inline constexpr char kOutputSelflearningMeanperformance[] = "selflearning-meanperformance";
inline constexpr char kOutputSelflearningStddevperformance[] = "selflearning-stddevperformance";

// Names of PMML: versions, namespaces, then elements, attributes and values.

inline constexpr char kVersion32[] = "3.2";
inline constexpr char kVersion40[] = "4.0";
inline constexpr char kNamespace32[] = "http://www.dmg.org/PMML-3_2";
inline constexpr char kNamespace40[] = "http://www.dmg.org/PMML-4_0";
inline constexpr char kNamespaceSchemaInstance[] = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr char kSchemaLocation32[] = "http://www.dmg.org/PMML-3_2 pmml-3-2.xsd";
inline constexpr char kSchemaLocation40[] = "http://www.dmg.org/PMML-4_0 pmml-4-0.xsd";

/// The value of "extender" that an "Extension" of this library family carries.
inline constexpr char ExtenderId[] = "kelscoring";

inline constexpr char kPmmlXmlns[] = "xmlns";
inline constexpr char kPmmlXmlnsXsi[] = "xmlns:xsi";
inline constexpr char kPmmlXsiSchemaLocation[] = "xsi:schemaLocation";
inline constexpr char kPmmlCopyright[] = "copyright";
inline constexpr char kPmmlDescription[] = "description";
inline constexpr char kPmmlAnnotation[] = "Annotation";
inline constexpr char kPmmlTimestamp[] = "Timestamp";
inline constexpr char kPmmlNumberOfFields[] = "numberOfFields";
inline constexpr char kPmmlCategorical[] = "categorical";
inline constexpr char kPmmlContinuous[] = "continuous";
inline constexpr char kPmmlOrdinal[] = "ordinal";
inline constexpr char kPmmlFloat[] = "float";
inline constexpr char kPmmlDouble[] = "double";
inline constexpr char kPmmlInteger[] = "integer";
inline constexpr char kPmmlDate[] = "date";
inline constexpr char kPmmlTime[] = "time";
inline constexpr char kPmmlDateTime[] = "dateTime";
inline constexpr char kPmmlDateDaysSince1970[] = "dateDaysSince[1970]";
inline constexpr char kPmmlTimeSeconds[] = "timeSeconds";
inline constexpr char kPmmlDateTimeSecondsSince1970[] = "dateTimeSecondsSince[1970]";
inline constexpr char kPmmlMissing[] = "missing";
inline constexpr char kPmmlInvalid[] = "invalid";
inline constexpr char kPmmlMissingInterval[] = "missingInterval";
inline constexpr char kPmmlNormContinuous[] = "NormContinuous";
inline constexpr char kPmmlNormDiscrete[] = "NormDiscrete";
inline constexpr char kPmmlMapValues[] = "MapValues";
inline constexpr char kPmmlLinearNorm[] = "LinearNorm";
inline constexpr char kPmmlOrig[] = "orig";
inline constexpr char kPmmlNorm[] = "norm";
inline constexpr char kPmmlApply[] = "Apply";
inline constexpr char kPmmlFunction[] = "function";
inline constexpr char kPmmlFieldRef[] = "FieldRef";
inline constexpr char kPmmlClosure[] = "closure";
inline constexpr char kPmmlOpenOpen[] = "openOpen";
inline constexpr char kPmmlOpenClosed[] = "openClosed";
inline constexpr char kPmmlClosedOpen[] = "closedOpen";
inline constexpr char kPmmlClosedClosed[] = "closedClosed";
inline constexpr char kPmmlSegment[] = "Segment";
inline constexpr char kPmmlId[] = "id";
inline constexpr char kPmmlMajorityVote[] = "majorityVote";
inline constexpr char kPmmlWeightedMajorityVote[] = "weightedMajorityVote";
inline constexpr char kPmmlAverage[] = "average";
inline constexpr char kPmmlWeightedAverage[] = "weightedAverage";
inline constexpr char kPmmlMedian[] = "median";
inline constexpr char kPmmlMax[] = "max";
inline constexpr char kPmmlSum[] = "sum";
inline constexpr char kPmmlSelectFirst[] = "selectFirst";
inline constexpr char kPmmlSelectAll[] = "selectAll";
inline constexpr char kPmmlWeightedMedian[] = "weightedMedian";
inline constexpr char kPmmlModelID[] = "modelID";
inline constexpr char kPmmlActiveModelID[] = "activeModelID";
inline constexpr char kPmmlClassification[] = "classification";
inline constexpr char kPmmlRegression[] = "regression";
inline constexpr char kPmmlFieldName[] = "fieldName";
inline constexpr char kPmmlActive[] = "active";
inline constexpr char kPmmlMissingValueReplacement[] = "missingValueReplacement";
inline constexpr char kPmmlMissingValueTreatment[] = "missingValueTreatment";
inline constexpr char kPmmlAsIs[] = "asIs";
inline constexpr char kPmmlAsValue[] = "asValue";
inline constexpr char kPmmlAsMean[] = "asMean";
inline constexpr char kPmmlAsMode[] = "asMode";
inline constexpr char kPmmlOutliers[] = "outliers";
inline constexpr char kPmmlAsMissingValues[] = "asMissingValues";
inline constexpr char kPmmlAsExtremeValues[] = "asExtremeValues";
inline constexpr char kPmmlLowValue[] = "lowValue";
inline constexpr char kPmmlHighValue[] = "highValue";
inline constexpr char kPmmlImportance[] = "importance";
inline constexpr char kPmmlOutput[] = "Output";
inline constexpr char kPmmlOutputField[] = "OutputField";
inline constexpr char kPmmlFeature[] = "feature";
inline constexpr char kPmmlEntityId[] = "entityId";
inline constexpr char kPmmlPredictedValue[] = "predictedValue";
inline constexpr char kPmmlResidual[] = "residual";
inline constexpr char kPmmlStandardError[] = "standardError";
inline constexpr char kPmmlModelStats[] = "ModelStats";
inline constexpr char kPmmlAnova[] = "Anova";
inline constexpr char kPmmlAnovaRow[] = "AnovaRow";
inline constexpr char kPmmlSumOfSquares[] = "sumOfSquares";
inline constexpr char kPmmlDegreesOfFreedom[] = "degreesOfFreedom";
inline constexpr char kPmmlMeanOfSquares[] = "meanOfSquares";
inline constexpr char kPmmlFValue[] = "fValue";
inline constexpr char kPmmlPValue[] = "pValue";
inline constexpr char kPmmlUnivariateStats[] = "UnivariateStats";
inline constexpr char kPmmlArray[] = "Array";
inline constexpr char kPmmlN[] = "n";
inline constexpr char kPmmlType[] = "type";
inline constexpr char kPmmlReal[] = "real";
inline constexpr char kPmmlInt[] = "int";
inline constexpr char kPmmlMatrix[] = "Matrix";
inline constexpr char kPmmlKind[] = "kind";
inline constexpr char kPmmlDiagonal[] = "diagonal";
inline constexpr char kPmmlCovariances[] = "Covariances";
inline constexpr char kPmmlPartition[] = "Partition";
inline constexpr char kPmmlPartitionFieldStats[] = "PartitionFieldStats";
inline constexpr char kPmmlNName[] = "N";
inline constexpr char kPmmlCounts[] = "Counts";
inline constexpr char kPmmlTotalFreq[] = "totalFreq";
inline constexpr char kPmmlInvalidFreq[] = "invalidFreq";
inline constexpr char kPmmlMissingFreq[] = "missingFreq";
inline constexpr char kPmmlCardinality[] = "cardinality";
inline constexpr char kPmmlDiscrStats[] = "DiscrStats";
inline constexpr char kPmmlNumericInfo[] = "NumericInfo";
inline constexpr char kPmmlMinimum[] = "minimum";
inline constexpr char kPmmlMaximum[] = "maximum";
inline constexpr char kPmmlMean[] = "mean";
inline constexpr char kPmmlStandardDeviation[] = "standardDeviation";
inline constexpr char kPmmlContStats[] = "ContStats";
inline constexpr char kPmmlContainerModel[] = "containerModel";
inline constexpr char kPmmlParameterList[] = "ParameterList";
inline constexpr char kPmmlLabel[] = "label";
inline constexpr char kPmmlFactorList[] = "FactorList";
inline constexpr char kPmmlPredictor[] = "Predictor";
inline constexpr char kPmmlCovariateList[] = "CovariateList";
inline constexpr char kPmmlPPMatrix[] = "PPMatrix";
inline constexpr char kPmmlPPCell[] = "PPCell";
inline constexpr char kPmmlPredictorName[] = "predictorName";
inline constexpr char kPmmlParameterName[] = "parameterName";
inline constexpr char kPmmlTargetCategory[] = "targetCategory";
inline constexpr char kPmmlPCovMatrix[] = "PCovMatrix";
inline constexpr char kPmmlModel[] = "model";
inline constexpr char kPmmlRobust[] = "robust";
inline constexpr char kPmmlModelDF[] = "modelDF";
inline constexpr char kPmmlTargetReferenceCategory[] = "targetReferenceCategory";
inline constexpr char kPmmlModelType[] = "modelType";
inline constexpr char kPmmlGeneralLinear[] = "generalLinear";
inline constexpr char kPmmlMultinomialLogistic[] = "multinomialLogistic";
inline constexpr char kPmmlOrdinalMultinomial[] = "ordinalMultinomial";
inline constexpr char kPmmlGeneralizedLinear[] = "generalizedLinear";
inline constexpr char kPmmlCoxRegression[] = "CoxRegression";
inline constexpr char kPmmlPCovCell[] = "PCovCell";
inline constexpr char kPmmlTRow[] = "tRow";
inline constexpr char kPmmlTCol[] = "tCol";
inline constexpr char kPmmlPRow[] = "pRow";
inline constexpr char kPmmlPCol[] = "pCol";
inline constexpr char kPmmlParamMatrix[] = "ParamMatrix";
inline constexpr char kPmmlPCell[] = "PCell";
inline constexpr char kPmmlBeta[] = "beta";
inline constexpr char kPmmlDf[] = "df";
inline constexpr char kPmmlActivationFunction[] = "activationFunction";
inline constexpr char kPmmlRadialBasis[] = "radialBasis";
inline constexpr char kPmmlClustering[] = "clustering";
inline constexpr char kPmmlNeuralInputs[] = "NeuralInputs";
inline constexpr char kPmmlNeuralInput[] = "NeuralInput";
inline constexpr char kPmmlNeuralLayer[] = "NeuralLayer";
inline constexpr char kPmmlNumberOfNeurons[] = "numberOfNeurons";
inline constexpr char kPmmlNormalizationMethod[] = "normalizationMethod";
inline constexpr char kPmmlSimplemax[] = "simplemax";
inline constexpr char kPmmlSoftmax[] = "softmax";
inline constexpr char kPmmlNeuron[] = "Neuron";
inline constexpr char kPmmlWidth[] = "width";
inline constexpr char kPmmlBias[] = "bias";
inline constexpr char kPmmlTanh[] = "tanh";
inline constexpr char kPmmlIdentity[] = "identity";
inline constexpr char kPmmlNumberOfLayers[] = "numberOfLayers";
inline constexpr char kPmmlLogistic[] = "logistic";
inline constexpr char kPmmlCon[] = "Con";
inline constexpr char kPmmlWeight[] = "weight";
inline constexpr char kPmmlNeuralOutputs[] = "NeuralOutputs";
inline constexpr char kPmmlNeuralOutput[] = "NeuralOutput";
inline constexpr char kPmmlOutputNeuron[] = "outputNeuron";
inline constexpr char kPmmlXKohonenXDimension[] = "x-kohonenXDimension";
inline constexpr char kPmmlXKohonenYDimension[] = "x-kohonenYDimension";
inline constexpr char kPmmlKohonenXDimension[] = "kohonenXDimension";
inline constexpr char kPmmlKohonenYDimension[] = "kohonenYDimension";
inline constexpr char kPmmlTrue[] = "true";
inline constexpr char kPmmlFalse[] = "false";

inline constexpr char kPmmlPMML[] = "PMML";
inline constexpr char kPmmlVersion[] = "version";
inline constexpr char kPmmlHeader[] = "Header";
inline constexpr char kPmmlApplication[] = "Application";
inline constexpr char kPmmlName[] = "name";
inline constexpr char kPmmlValue[] = "value";
inline constexpr char kPmmlExtender[] = "extender";
inline constexpr char kPmmlExtension[] = "Extension";
inline constexpr char kPmmlMiningBuildTask[] = "MiningBuildTask";
inline constexpr char kPmmlDataDictionary[] = "DataDictionary";
inline constexpr char kPmmlTransformationDictionary[] = "TransformationDictionary";
inline constexpr char kPmmlLocalTransformations[] = "LocalTransformations";
inline constexpr char kPmmlMiningSchema[] = "MiningSchema";
inline constexpr char kPmmlMiningField[] = "MiningField";
inline constexpr char kPmmlUsageType[] = "usageType";
inline constexpr char kPmmlPredicted[] = "predicted";
inline constexpr char kPmmlSegmentation[] = "Segmentation";
inline constexpr char kPmmlMultipleModelMethod[] = "multipleModelMethod";
inline constexpr char kPmmlStandalone[] = "standalone";
inline constexpr char kPmmlModelName[] = "modelName";
inline constexpr char kPmmlFunctionName[] = "functionName";
inline constexpr char kPmmlAlgorithmName[] = "algorithmName";
inline constexpr char kPmmlAdjustedPropensity[] = "adjustedPropensity";
inline constexpr char kPmmlDerivedFields[] = "DerivedFields";
inline constexpr char kPmmlDataField[] = "DataField";
inline constexpr char kPmmlDerivedField[] = "DerivedField";
inline constexpr char kPmmlDisplayName[] = "displayName";
inline constexpr char kPmmlOptype[] = "optype";
inline constexpr char kPmmlDataType[] = "dataType";
inline constexpr char kPmmlString[] = "string";
inline constexpr char kPmmlBoolean[] = "boolean";
inline constexpr char kPmmlValueElement[] = "Value";
inline constexpr char kPmmlProperty[] = "property";
inline constexpr char kPmmlValid[] = "valid";
inline constexpr char kPmmlDisplayValue[] = "displayValue";
inline constexpr char kPmmlInterval[] = "Interval";
inline constexpr char kPmmlLeftMargin[] = "leftMargin";
inline constexpr char kPmmlRightMargin[] = "rightMargin";
inline constexpr char kPmmlDiscretize[] = "Discretize";
inline constexpr char kPmmlDiscretizeBin[] = "DiscretizeBin";
inline constexpr char kPmmlBinValue[] = "binValue";
inline constexpr char kPmmlField[] = "field";
inline constexpr char kPmmlParameter[] = "Parameter";
inline constexpr char kPmmlListValue[] = "ListValue";
inline constexpr char kPmmlAdjustedPropensityByNN[] = "AdjustedPropensityByNN";
inline constexpr char kPmmlHiddenLayer[] = "HiddenLayer";
inline constexpr char kPmmlOutputLayer[] = "OutputLayer";

}  // namespace KelScoring_20::KelScoringConst
